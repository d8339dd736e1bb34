#pragma once

#include <QWidget>

#include <memory>

/// The panels by the names of their models: "ka1", "ka2" or "ks".
namespace PanelModels {

std::unique_ptr<QWidget> make(const QString& model);

} // namespace PanelModels
