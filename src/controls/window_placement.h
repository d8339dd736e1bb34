#pragma once

#include <QBasicTimer>
#include <QObject>
#include <QSize>

class QRect;
class QWidget;

/// Keeps a top-level window as large as its content and within a screen. It fits its content each
/// time it is shown and a moment after each change; once the user has resized it, it has the user's
/// size instead, or what the content needs where that is more. When it is shown or resized by the
/// program, it is moved into an available screen. Belongs to the window. GUI thread only.
class WindowPlacement : public QObject
{
public:
    explicit WindowPlacement(QWidget& placed);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    QRect sight() const;
    void fit();
    void bringIntoSight();

    QWidget& window;
    QSize programSize; ///< what the program asked for last: any other is the user's
    QSize userSize;    ///< invalid until there is one
    QBasicTimer settling;
};
