#include "random/hands.h"

#include "random/virtual_time.h"
#include "support/window_activation.h"

#include <QApplication>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest/qtestspontaneevent.h>

namespace {

QPoint inWindow(const QWidget& target, QPoint position)
{
    return target.mapTo(target.window(), position);
}

QWindow* windowOf(const QWidget& target)
{
    return target.window()->windowHandle();
}

QWidget* focusOf(QWidget& window)
{
    return window.focusWidget() != nullptr ? window.focusWidget() : &window;
}

void settle()
{
    VirtualTime::instance().settle();
}

} // namespace

void Hands::activate(QWidget& window)
{
    requestActivation(window);
    settle();
}

void Hands::click(QWidget& target, QPoint position)
{
    QTest::mouseClick(windowOf(target), Qt::LeftButton, {}, inWindow(target, position));
    settle();
}

void Hands::doubleClick(QWidget& target, QPoint position)
{
    QTest::mouseDClick(windowOf(target), Qt::LeftButton, {}, inWindow(target, position));
    settle();
}

void Hands::drag(QWidget& target, const std::vector<QPoint>& positions,
                 Qt::KeyboardModifiers modifiers)
{
    QWindow* const window = windowOf(target);
    QTest::mousePress(window, Qt::LeftButton, modifiers, inWindow(target, positions.front()));
    for (std::size_t i = 1; i < positions.size(); ++i)
        QTest::mouseMove(window, inWindow(target, positions[i]));
    QTest::mouseRelease(window, Qt::LeftButton, modifiers, inWindow(target, positions.back()));
    settle();
}

void Hands::wheel(QWidget& target, QPoint at, QPoint angleDelta)
{
    const QPoint position = inWindow(target, at);
    QWidget* const window = target.window();
    QWheelEvent event(position, window->mapToGlobal(position), {}, angleDelta, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    // As from outside: what the toolkit takes for the program's own goes to no second widget.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(window->windowHandle(), &event);
    settle();
}

void Hands::type(QWidget& window, const QString& text)
{
    for (const QChar letter : text) {
        QTest::sendKeyEvent(QTest::Click, focusOf(window), Qt::Key_unknown, QString(letter),
                            Qt::NoModifier);
    }
    settle();
}

void Hands::key(QWidget& window, Qt::Key key)
{
    QTest::keyClick(focusOf(window), key);
    settle();
}
