#pragma once

#include <QPushButton>
#include <QString>

class QGraphicsDropShadowEffect;

/// Toggle button that lights up in its own colours, with a glow around it, while it is on.
///
/// It keeps its own state instead of Qt's checkable one and toggles when the mouse or the space bar
/// presses it, of which QAbstractButton hears nothing: its own signals never come. Colours are
/// style sheet colours and set through the members; call applyStyle() afterwards. GUI thread only.
class Button : public QPushButton
{
    Q_OBJECT

public:
    explicit Button(const QString& text, QWidget* parent = nullptr);

    /// Applies the colours and the glow of the present state.
    void applyStyle();

    /// Turns the button on or off and announces it once, also when nothing changed.
    void setOn(bool status);

    /// What a press does: toggles and announces it twice.
    void press();

    /// With `enable`, blurs the glow by `factor` times the widget's width; otherwise does nothing.
    void setShadow(bool enable, double factor);

    QString label;
    int styleInt = 10;
    /// Radius of the corners in pixels.
    int borderRadius = 3;
    QString onTextColor = QStringLiteral("#000000");
    QString offTextColor = QStringLiteral("#00ff7f");
    QString glowColor = QStringLiteral("#00ff7f");
    QString onBackground = QStringLiteral("#00ff7f");
    QString offBackground = QStringLiteral("#1b1e23");
    QString spareColor = QStringLiteral("#1b1e23");
    QString secondSpareColor = QStringLiteral("#1b1e23");
    /// A press with Control held is ignored.
    bool ignoreCtrlClick = false;
    bool hovered = false;
    bool on = false;
    QGraphicsDropShadowEffect* glow = nullptr;
    void* spare = nullptr;

signals:
    /// Never emitted.
    void selected(const QString& text);

    /// The new state: twice per press, so that its receivers send each command twice; once per
    /// setOn(). A receiver that is done with the button uses deleteLater(). Hides
    /// QAbstractButton::pressed().
    void pressed(bool status);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void light(double factor);
    void change(bool status);
};
