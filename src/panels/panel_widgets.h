#pragma once

#include <QString>

class Button;
class Knob;
class QBoxLayout;
class QFrame;
class QLabel;
class QLayout;
class QWidget;

/// The building stones of a panel, in the panels' common look. The caller puts them into a layout.
namespace PanelWidgets {

inline constexpr const char* captionStyle = "font-size: 12px; color: white;";
inline constexpr const char* smallCaptionStyle = "font-size: 10px; color: white;";

inline constexpr const char* micAccent = "#00ff7f";
inline constexpr const char* padAccent = "#ff7f00";
inline constexpr const char* phantomAccent = "#ff1111";
inline constexpr const char* outputAccent = "#00FFFF";

/// The heading of a strip.
QLabel* title(const QString& text);
QLabel* caption(const QString& text, const char* style = captionStyle);
/// A level read-out, which shows `text` until the first reading.
QLabel* readOut(const QString& text = QStringLiteral("-160 dB"));
/// Shows a level in dB full scale with one decimal.
void showLevel(QLabel* readOut, double dB);

/// Microphone gain in dB, from 0 up to `maximum`, shown `displayOffset` higher.
Knob* gainKnob(int maximum, int displayOffset, QWidget* parent);
/// Output volume, -80 dB to 6 dB.
Knob* volumeKnob(QWidget* parent);
/// The small knob of the phone's level, -80 dB to 6 dB.
Knob* phoneKnob(QWidget* parent);

/// Without a parent until a layout takes it over.
Button* button(const QString& text, const char* accent);
/// The tall MUTE and DIM buttons of an output.
Button* outputButton(const QString& text, int styleInt);

/// The layout of a whole panel, without margins; it becomes the panel's own.
QBoxLayout* rootLayout(QWidget* panel);

/// Lets Tab go through the layout's controls as they are read: strip by strip, from top to bottom.
void tabInReadingOrder(QLayout* layout);

/// The vertical line between inputs and outputs.
QFrame* separator(QWidget* parent);

} // namespace PanelWidgets
