#pragma once

#include <QStringList>

class QWidget;

/// A panel told in words.
namespace PanelText {

/// The texts of the labels and buttons in the order of the layout.
QStringList texts(const QWidget& panel);

/// Widgets of a shown panel that overlap, leave it or are smaller than their content.
QStringList misplaced(const QWidget& panel);

} // namespace PanelText
