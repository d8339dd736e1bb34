#pragma once

#include "controls/knob_painter.h"

#include <QColor>
#include <QRect>
#include <QString>
#include <QWidget>

#include <optional>

class QLineEdit;

/// Rotary control for an integer value, most often a level in dB: an arc of 270 degrees around
/// a round cap, with the value printed in its centre.
///
/// Dragging and the wheel change the value by one step per event, a double click on the text
/// opens an editor in place, Ctrl+click or a double click elsewhere returns to the minimum. With
/// the focus, arrows step by one, Page Up and Page Down by five, Home and End go to the bounds,
/// Enter opens the editor. Enter commits what was typed, Escape leaves the value as it was; what
/// else there is to know of focus and editor is in KeyboardPolicy.
/// Range, look and value are set through the members; call update() when the knob is already
/// visible. GUI thread only.
class Knob : public QWidget
{
    Q_OBJECT

public:
    /// A pointer position in whole pixels of the widget.
    struct Position
    {
        int y = 0;
        int x = 0;
    };

    explicit Knob(QWidget* parent = nullptr);

    /// Takes over `v`, limited to [minimum, maximum], and announces it.
    void setValue(int v);

    /// setValue(), unless the pointer is over the knob: a value pushed from outside must not
    /// fight the user's hand.
    void setValueIfIdle(int v);

    /// With `enable`, gives the knob a drop shadow in `shadowColor`, blurred by `factor` times
    /// the widget's width; otherwise does nothing.
    void setShadow(bool enable, double factor);

    /// The number that is printed for a value.
    qint64 shownValue(int v) const;
    /// The same with its unit, as printed.
    QString shownText(int v) const;
    /// As if that number had been typed, but at least one step towards it.
    void setShownValue(int shown);

    int value = -80;
    /// Pen width of both arcs and inset of their rectangle, in pixels.
    int arcWidth = 7;
    bool roundCap = true;
    int maximum = 6;
    /// Lower bound and reset value. Wins over `maximum` when the two are crossed.
    int minimum = -80;
    QColor arcColor{QStringLiteral("#00ffff")};
    /// Prints the value and lets a double click on it open the editor.
    bool showText = true;
    QString fontFamily = QStringLiteral("Segoe UI");
    int fontPointSize = 12;
    /// Unit printed after the value and accepted, as written, at the end of typed input.
    QString suffix = QStringLiteral("dB");
    QColor textColor{QStringLiteral("#ff79c6")};
    bool showTrack = true;
    QColor trackColor{QStringLiteral("#44475a")};
    /// Diameter of the cap as a fraction of the width of the arc rectangle.
    double knobRatio = 0.8;
    QColor shadowColor;
    /// Where the previous drag step was. A press does not record it.
    Position lastPos;
    bool hovered = false;
    /// Added to the value for display, subtracted from typed input.
    int displayOffset = 0;
    QLineEdit* editor = nullptr;
    /// Where the text was last painted; null before the first paint.
    QRect textRect;

signals:
    /// The value after each user action and each setter, also when it stayed the same. A receiver
    /// that is done with the knob uses deleteLater().
    void valueChangedSig(int value);

public slots:
    /// Takes the editor's text as the new value and hides the editor. Text that is no number
    /// keeps the value, but is lowered by `displayOffset` all the same.
    void finishEdit();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    /// Watches the whole application while the editor is open.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void change(qint64 candidate);
    /// The value that the key stands for; nothing for any other key.
    std::optional<qint64> valueAfter(int key) const;
    void openEditor(QWidget* returnTo);
    void fillEditor();
    void closeEditor();
    bool isEditing() const;
    bool endsEditing(const QKeyEvent& key);
    void dropTextWithoutNumber();
    std::optional<int> typedNumber() const;

    KnobPainter knobPainter;
    QWidget* focusAfterwards = this; ///< what gets the focus when the editing ends
};
