#pragma once

#include <QString>
#include <QWidget>

/// The text that a widget paints by itself, as the painter gets it.
QString paintedText(QWidget& widget);
