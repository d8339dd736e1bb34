#include "unit/controls/knob_stage.h"
#include "support/patience.h"

#include <QApplication>
#include <QTest>
#include <QWheelEvent>

KnobStage::KnobStage()
    : knob(&window)
    , neighbour(QStringLiteral("MUTE"), &window)
    , spy(&knob, &Knob::valueChangedSig)
{
    window.resize(300, 200);
    knob.setGeometry(20, 30, 120, 120);
    neighbour.setGeometry(180, 30, 80, 40);
}

bool KnobStage::show()
{
    window.show();
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window, patience) &&
           QTest::qWaitFor([this] { return !knob.textRect.isNull(); }, patience);
}

void KnobStage::press(QPoint position, Qt::KeyboardModifiers modifiers)
{
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, modifiers, inWindow(position));
}

void KnobStage::move(QPoint position)
{
    QTest::mouseMove(window.windowHandle(), inWindow(position));
}

void KnobStage::release(QPoint position)
{
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, inWindow(position));
}

void KnobStage::doubleClick(QPoint position)
{
    QTest::mouseDClick(window.windowHandle(), Qt::LeftButton, {}, inWindow(position));
}

bool KnobStage::wheel(QPoint angleDelta)
{
    const QPoint centre = knob.rect().center();
    QWheelEvent event(centre, knob.mapToGlobal(centre), {}, angleDelta, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&knob, &event);
    return event.isAccepted();
}

QList<int> KnobStage::announced()
{
    QList<int> values;
    for (const QList<QVariant>& arguments : std::as_const(spy))
        values.append(arguments.at(0).toInt());
    spy.clear();
    return values;
}

QPoint KnobStage::inWindow(QPoint position) const
{
    return knob.mapTo(&window, position);
}
