#include "support/test_main.h"
#include "unit/controls/knob_stage.h"

#include <QApplication>
#include <QLineEdit>
#include <QMouseEvent>
#include <QTest>

namespace {

/// Sends the knob one mouse event at a position between pixels.
void sendMouse(Knob& knob, QEvent::Type type, QPointF position,
               Qt::MouseButtons held = Qt::LeftButton)
{
    const Qt::MouseButton cause = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, position, knob.mapToGlobal(position), cause, held, Qt::NoModifier);
    QApplication::sendEvent(&knob, &event);
}

/// What lies below a knob, counting the presses that reach it.
class PressCount : public QWidget
{
public:
    int presses = 0;

protected:
    void mousePressEvent(QMouseEvent*) override { ++presses; }
};

} // namespace

class KnobMouseTest : public QObject
{
    Q_OBJECT

private slots:
    void plainPressDoesNothing();
    void plainPressIsNotPassedOn();
    void ctrlPressResets_data();
    void ctrlPressResets();
    void dragSteps_data();
    void dragSteps();
    void dragAnnouncesEachStep();
    void firstMoveEverIsComparedWithTheCorner_data();
    void firstMoveEverIsComparedWithTheCorner();
    void nextDragContinuesFromTheLast();
    void moveWithoutTheLeftButtonDoesNothing();
    void dragRoundsHalvesAwayFromZero_data();
    void dragRoundsHalvesAwayFromZero();
    void valueOutsideTheBoundsComesBack();
    void doubleClickOutsideTheTextResets();
    void doubleClickInsideTheTextOpensTheEditor();
    void doubleClickBeforeTheFirstPaintResets();
    void hiddenTextHasNoEditor();
    void doubleClickHitsWholePixels_data();
    void doubleClickHitsWholePixels();
    void hover();
};

void KnobMouseTest::plainPressDoesNothing()
{
    KnobStage stage;
    QVERIFY(stage.show());
    stage.knob.value = -20;
    stage.press({30, 40});
    stage.release({30, 40});
    QTest::mouseClick(stage.window.windowHandle(), Qt::LeftButton, Qt::ShiftModifier, {50, 60});
    QCOMPARE(stage.knob.value, -20);
    QCOMPARE(stage.announced(), QList<int>{});
    QCOMPARE(stage.knob.lastPos.x, 0);
    QCOMPARE(stage.knob.lastPos.y, 0);
}

void KnobMouseTest::plainPressIsNotPassedOn()
{
    PressCount window;
    window.resize(200, 200);
    Knob knob(&window);
    knob.setGeometry(20, 20, 120, 120);
    QTest::mouseClick(&knob, Qt::LeftButton);
    QTest::mouseClick(&knob, Qt::RightButton);
    QTest::mouseClick(&knob, Qt::LeftButton, Qt::ControlModifier);
    QCOMPARE(window.presses, 0);
    QTest::mouseClick(&window, Qt::LeftButton);
    QCOMPARE(window.presses, 1);
}

void KnobMouseTest::ctrlPressResets_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");

    QTest::newRow("above") << -20 << Qt::KeyboardModifiers(Qt::ControlModifier);
    QTest::newRow("already there") << -80 << Qt::KeyboardModifiers(Qt::ControlModifier);
    QTest::newRow("with shift") << 6 << (Qt::ControlModifier | Qt::ShiftModifier);
}

void KnobMouseTest::ctrlPressResets()
{
    QFETCH(const int, start);
    QFETCH(const Qt::KeyboardModifiers, modifiers);

    KnobStage stage;
    QVERIFY(stage.show());
    stage.knob.value = start;
    stage.press({30, 40}, modifiers);
    QCOMPARE(stage.knob.value, -80);
    QCOMPARE(stage.announced(), QList<int>{-80});
    stage.release({30, 40});
    QCOMPARE(stage.announced(), QList<int>{});
}

void KnobMouseTest::dragSteps_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<QPoint>("movement");
    QTest::addColumn<int>("expected");

    QTest::newRow("up") << -20 << QPoint(0, -1) << -19;
    QTest::newRow("down") << -20 << QPoint(0, 1) << -21;
    QTest::newRow("right") << -20 << QPoint(1, 0) << -19;
    QTest::newRow("left") << -20 << QPoint(-1, 0) << -21;
    QTest::newRow("far up") << -20 << QPoint(0, -40) << -19;
    QTest::newRow("far left") << -20 << QPoint(-40, 0) << -21;
    QTest::newRow("up right") << -20 << QPoint(9, -2) << -18;
    QTest::newRow("down left") << -20 << QPoint(-9, 2) << -22;
    QTest::newRow("up left") << -20 << QPoint(-9, -9) << -20;
    QTest::newRow("down right") << -20 << QPoint(9, 9) << -20;
    QTest::newRow("up at the maximum") << 6 << QPoint(0, -5) << 6;
    QTest::newRow("right at the maximum") << 6 << QPoint(5, 0) << 6;
    QTest::newRow("down at the minimum") << -80 << QPoint(0, 5) << -80;
    QTest::newRow("left at the minimum") << -80 << QPoint(-5, 0) << -80;
    QTest::newRow("up right, one below the maximum") << 5 << QPoint(3, -3) << 6;
    QTest::newRow("down left, one above the minimum") << -79 << QPoint(-3, 3) << -80;
    QTest::newRow("up left at the maximum") << 6 << QPoint(-3, -3) << 5;
    QTest::newRow("down right at the minimum") << -80 << QPoint(3, 3) << -79;
}

void KnobMouseTest::dragSteps()
{
    QFETCH(const int, start);
    QFETCH(const QPoint, movement);
    QFETCH(const int, expected);

    KnobStage stage;
    QVERIFY(stage.show());
    const QPoint origin(60, 60);
    stage.press(origin);
    stage.move(origin + QPoint(1, 1));
    stage.move(origin);
    stage.knob.value = start;
    stage.announced();

    stage.move(origin + movement);
    QCOMPARE(stage.knob.value, expected);
    QCOMPARE(stage.announced(), QList<int>{expected});
    QCOMPARE(stage.knob.lastPos.x, 60 + movement.x());
    QCOMPARE(stage.knob.lastPos.y, 60 + movement.y());
    stage.release(origin + movement);
    QCOMPARE(stage.announced(), QList<int>{});
}

void KnobMouseTest::dragAnnouncesEachStep()
{
    KnobStage stage;
    QVERIFY(stage.show());
    stage.knob.value = 3;
    stage.knob.lastPos = {60, 60};
    stage.press({60, 60});
    for (int y = 59; y > 54; --y)
        stage.move({60, y});
    stage.release({60, 55});
    QCOMPARE(stage.announced(), (QList<int>{4, 5, 6, 6, 6}));
}

void KnobMouseTest::firstMoveEverIsComparedWithTheCorner_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("expected");

    // Seen from the corner each position is below (one down) and to the right (one up).
    QTest::newRow("in between") << -20 << -20;
    QTest::newRow("at the minimum") << -80 << -79;
    QTest::newRow("at the maximum") << 6 << 6;
}

void KnobMouseTest::firstMoveEverIsComparedWithTheCorner()
{
    QFETCH(const int, start);
    QFETCH(const int, expected);

    KnobStage stage;
    QVERIFY(stage.show());
    stage.knob.value = start;
    stage.press({60, 60});
    stage.move({60, 50});
    QCOMPARE(stage.announced(), QList<int>{expected});
}

void KnobMouseTest::nextDragContinuesFromTheLast()
{
    KnobStage stage;
    QVERIFY(stage.show());
    stage.press({60, 60});
    stage.move({60, 50});
    stage.release({60, 50});
    stage.knob.value = -20;
    stage.announced();

    // Upwards from the press, yet downwards from where the last drag ended.
    stage.press({60, 100});
    stage.move({60, 90});
    QCOMPARE(stage.announced(), QList<int>{-21});
}

void KnobMouseTest::moveWithoutTheLeftButtonDoesNothing()
{
    KnobStage stage;
    QVERIFY(stage.show());
    stage.knob.value = -20;
    stage.knob.setMouseTracking(true);
    stage.move({60, 50});
    stage.move({60, 40});
    QTest::mousePress(stage.window.windowHandle(), Qt::RightButton, {}, {80, 80});
    stage.move({60, 30});
    QTest::mouseRelease(stage.window.windowHandle(), Qt::RightButton, {}, {80, 60});
    QCOMPARE(stage.knob.value, -20);
    QCOMPARE(stage.announced(), QList<int>{});
    QCOMPARE(stage.knob.lastPos.x, 0);
    QCOMPARE(stage.knob.lastPos.y, 0);
}

void KnobMouseTest::dragRoundsHalvesAwayFromZero_data()
{
    QTest::addColumn<QPointF>("position");
    QTest::addColumn<QPoint>("rounded");

    QTest::newRow("below a half") << QPointF(10.49, 20.25) << QPoint(10, 20);
    QTest::newRow("a half") << QPointF(10.5, 20.5) << QPoint(11, 21);
    QTest::newRow("negative half") << QPointF(-0.5, -10.5) << QPoint(-1, -11);
    QTest::newRow("negative") << QPointF(-0.25, -10.75) << QPoint(0, -11);
}

void KnobMouseTest::dragRoundsHalvesAwayFromZero()
{
    QFETCH(const QPointF, position);
    QFETCH(const QPoint, rounded);

    Knob knob;
    sendMouse(knob, QEvent::MouseMove, position);
    QCOMPARE(QPoint(knob.lastPos.x, knob.lastPos.y), rounded);
}

void KnobMouseTest::valueOutsideTheBoundsComesBack()
{
    // A panel narrows the range without touching the value.
    KnobStage stage;
    stage.knob.minimum = 0;
    stage.knob.maximum = 42;
    stage.wheel({0, -120});
    QCOMPARE(stage.announced(), QList<int>{0});
    stage.knob.value = 100;
    sendMouse(stage.knob, QEvent::MouseMove, {0, 0});
    QCOMPARE(stage.announced(), QList<int>{42});
}

void KnobMouseTest::doubleClickOutsideTheTextResets()
{
    KnobStage stage;
    QVERIFY(stage.show());
    stage.knob.value = -20;
    stage.doubleClick({60, 20});
    QCOMPARE(stage.knob.value, -80);
    QCOMPARE(stage.announced(), QList<int>{-80});
    QVERIFY(stage.knob.editor->isHidden());
}

void KnobMouseTest::doubleClickInsideTheTextOpensTheEditor()
{
    KnobStage stage;
    QVERIFY(stage.show());
    stage.knob.value = -20;
    stage.doubleClick({60, 60});
    QCOMPARE(stage.knob.value, -20);
    QCOMPARE(stage.announced(), QList<int>{});
    QVERIFY(stage.knob.editor->isVisible());
}

void KnobMouseTest::doubleClickBeforeTheFirstPaintResets()
{
    KnobStage stage;
    stage.knob.value = -20;
    sendMouse(stage.knob, QEvent::MouseButtonDblClick, {60, 60});
    QCOMPARE(stage.knob.value, -80);
    QCOMPARE(stage.announced(), QList<int>{-80});
    sendMouse(stage.knob, QEvent::MouseButtonDblClick, {0, 0});
    QCOMPARE(stage.announced(), QList<int>{-80});
    QVERIFY(stage.knob.editor->isHidden());
}

void KnobMouseTest::hiddenTextHasNoEditor()
{
    KnobStage stage;
    QVERIFY(stage.show());
    stage.knob.value = -20;
    stage.knob.showText = false;
    stage.doubleClick({60, 60});
    QCOMPARE(stage.announced(), QList<int>{-80});
    QVERIFY(stage.knob.editor->isHidden());
    stage.knob.setFocus();
    QTest::keyClick(stage.window.windowHandle(), Qt::Key_Return);
    QVERIFY(stage.knob.editor->isHidden());
}

void KnobMouseTest::doubleClickHitsWholePixels_data()
{
    QTest::addColumn<QPointF>("position");
    QTest::addColumn<bool>("inside");

    // The text covers the pixels 10 to 29 across and 20 to 29 down.
    QTest::newRow("first pixel") << QPointF(10, 20) << true;
    QTest::newRow("last pixel") << QPointF(29, 29) << true;
    QTest::newRow("rounded into the first column") << QPointF(9.5, 25) << true;
    QTest::newRow("left of the first column") << QPointF(9.49, 25) << false;
    QTest::newRow("rounded into the last column") << QPointF(29.49, 25) << true;
    QTest::newRow("rounded past the last column") << QPointF(29.5, 25) << false;
    QTest::newRow("rounded past the last row") << QPointF(20, 29.5) << false;
}

void KnobMouseTest::doubleClickHitsWholePixels()
{
    QFETCH(const QPointF, position);
    QFETCH(const bool, inside);

    Knob knob;
    knob.textRect = QRect(10, 20, 20, 10);
    sendMouse(knob, QEvent::MouseButtonDblClick, position);
    QCOMPARE(!knob.editor->isHidden(), inside);
}

void KnobMouseTest::hover()
{
    KnobStage stage;
    QVERIFY(stage.show());
    stage.move({170, 60});
    QCOMPARE(stage.knob.hovered, false);
    stage.move({60, 60});
    QCOMPARE(stage.knob.hovered, true);
    stage.move({170, 60});
    QCOMPARE(stage.knob.hovered, false);
    QCOMPARE(stage.announced(), QList<int>{});
}

QUORVEL_TEST_MAIN(KnobMouseTest)

#include "knob_mouse_test.moc"
