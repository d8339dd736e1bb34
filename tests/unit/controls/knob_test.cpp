#include "support/test_main.h"
#include "unit/controls/knob_stage.h"

#include <QApplication>
#include <QGraphicsDropShadowEffect>
#include <QLineEdit>
#include <QMetaMethod>
#include <QMouseEvent>
#include <QTest>

#include <limits>

namespace {

/// Sends the knob one mouse event at a position between pixels.
void sendMouse(Knob& knob, QEvent::Type type, QPointF position)
{
    const Qt::MouseButton cause = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, position, knob.mapToGlobal(position), cause, Qt::LeftButton,
                      Qt::NoModifier);
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

/// What the panels make no use of. How a hand turns their knobs is held by the random sequences,
/// how they look by the pictures.
class KnobTest : public QObject
{
    Q_OBJECT

private slots:
    void defaults();
    void metaObjectNames();
    void setValueLimitsAndAnnounces_data();
    void setValueLimitsAndAnnounces();
    void valueOutsideTheBoundsComesBack();
    void pushedValueYieldsToTheHand();
    void wheelIgnoresTheSizeOfTheDelta();
    void pressIsNotPassedOn();
    void otherButtonsDoNotDrag();
    void dragRoundsHalvesAwayFromZero_data();
    void dragRoundsHalvesAwayFromZero();
    void doubleClickBeforeTheFirstPaintResets();
    void doubleClickHitsWholePixels_data();
    void doubleClickHitsWholePixels();
    void hiddenTextHasNoEditor();
    void shadow();
};

void KnobTest::defaults()
{
    const Knob knob(nullptr);
    QCOMPARE(knob.value, -80);
    QCOMPARE(knob.arcWidth, 7);
    QCOMPARE(knob.roundCap, true);
    QCOMPARE(knob.maximum, 6);
    QCOMPARE(knob.minimum, -80);
    QCOMPARE(knob.arcColor, QColor(0x00, 0xff, 0xff));
    QCOMPARE(knob.showText, true);
    QCOMPARE(knob.fontFamily, QStringLiteral("Segoe UI"));
    QCOMPARE(knob.fontPointSize, 12);
    QCOMPARE(knob.suffix, QStringLiteral("dB"));
    QCOMPARE(knob.textColor, QColor(0xff, 0x79, 0xc6));
    QCOMPARE(knob.showTrack, true);
    QCOMPARE(knob.trackColor, QColor(0x44, 0x47, 0x5a));
    QCOMPARE(knob.knobRatio, 0.8);
    QVERIFY(!knob.shadowColor.isValid());
    QCOMPARE(QPoint(knob.lastPos.x, knob.lastPos.y), QPoint());
    QCOMPARE(knob.hovered, false);
    QCOMPARE(knob.displayOffset, 0);
    QCOMPARE(knob.editor->parentWidget(), &knob);
    QVERIFY(knob.editor->isHidden());
    QVERIFY(knob.textRect.isNull());
    QVERIFY(knob.graphicsEffect() == nullptr);
}

void KnobTest::metaObjectNames()
{
    const QMetaObject& meta = Knob::staticMetaObject;
    QCOMPARE(meta.className(), "Knob");
    QCOMPARE(meta.superClass()->className(), "QWidget");
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
    const QMetaMethod changed = meta.method(meta.methodOffset());
    QCOMPARE(changed.methodSignature(), QByteArray("valueChangedSig(int)"));
    QCOMPARE(changed.methodType(), QMetaMethod::Signal);
    const QMetaMethod finish = meta.method(meta.methodOffset() + 1);
    QCOMPARE(finish.methodSignature(), QByteArray("finishEdit()"));
    QCOMPARE(finish.methodType(), QMetaMethod::Slot);
}

void KnobTest::setValueLimitsAndAnnounces_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("given");
    QTest::addColumn<int>("kept");

    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    QTest::newRow("unchanged") << -80 << 6 << -80 << -80;
    QTest::newRow("above") << -80 << 6 << 7 << 6;
    QTest::newRow("far below") << -80 << 6 << lowest << -80;
    QTest::newRow("crossed bounds") << 10 << -10 << 0 << 10;
    QTest::newRow("crossed bounds, above both") << 10 << -10 << 50 << 10;
    QTest::newRow("full range") << lowest << highest << lowest << lowest;
}

void KnobTest::setValueLimitsAndAnnounces()
{
    QFETCH(const int, minimum);
    QFETCH(const int, maximum);
    QFETCH(const int, given);
    QFETCH(const int, kept);

    KnobStage stage;
    stage.knob.minimum = minimum;
    stage.knob.maximum = maximum;
    stage.knob.setValue(given);
    QCOMPARE(stage.knob.value, kept);
    QCOMPARE(stage.announced(), QList<int>{kept});
}

void KnobTest::valueOutsideTheBoundsComesBack()
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

void KnobTest::pushedValueYieldsToTheHand()
{
    KnobStage stage;
    QVERIFY(stage.show());
    stage.move({170, 60});
    QVERIFY(!stage.knob.hovered);
    stage.move({60, 60});
    QVERIFY(stage.knob.hovered);
    stage.knob.setValueIfIdle(-10);
    QCOMPARE(stage.announced(), QList<int>{});
    stage.move({170, 60});
    QVERIFY(!stage.knob.hovered);
    stage.knob.setValueIfIdle(-10);
    stage.knob.setValueIfIdle(100);
    QCOMPARE(stage.announced(), (QList<int>{-10, 6}));
}

void KnobTest::wheelIgnoresTheSizeOfTheDelta()
{
    KnobStage stage;
    stage.knob.value = -20;
    for (const QPoint delta : {QPoint(0, 1), QPoint(0, 1200), QPoint(0, -1), QPoint(500, 960),
                               QPoint(120, 0), QPoint(-120, 0), QPoint(0, 0)})
        QVERIFY(stage.wheel(delta));
    QCOMPARE(stage.announced(), (QList<int>{-19, -18, -19, -18, -19, -20, -21}));
}

void KnobTest::pressIsNotPassedOn()
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

void KnobTest::otherButtonsDoNotDrag()
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
    QCOMPARE(stage.announced(), QList<int>{});
    QCOMPARE(QPoint(stage.knob.lastPos.x, stage.knob.lastPos.y), QPoint());
}

void KnobTest::dragRoundsHalvesAwayFromZero_data()
{
    QTest::addColumn<QPointF>("position");
    QTest::addColumn<QPoint>("rounded");

    QTest::newRow("below a half") << QPointF(10.49, 20.25) << QPoint(10, 20);
    QTest::newRow("a half") << QPointF(10.5, 20.5) << QPoint(11, 21);
    QTest::newRow("negative half") << QPointF(-0.5, -10.5) << QPoint(-1, -11);
    QTest::newRow("negative") << QPointF(-0.25, -10.75) << QPoint(0, -11);
}

void KnobTest::dragRoundsHalvesAwayFromZero()
{
    QFETCH(const QPointF, position);
    QFETCH(const QPoint, rounded);

    Knob knob;
    sendMouse(knob, QEvent::MouseMove, position);
    QCOMPARE(QPoint(knob.lastPos.x, knob.lastPos.y), rounded);
}

void KnobTest::doubleClickBeforeTheFirstPaintResets()
{
    KnobStage stage;
    stage.knob.value = -20;
    sendMouse(stage.knob, QEvent::MouseButtonDblClick, {60, 60});
    sendMouse(stage.knob, QEvent::MouseButtonDblClick, {0, 0});
    QCOMPARE(stage.announced(), (QList<int>{-80, -80}));
    QVERIFY(stage.knob.editor->isHidden());
}

void KnobTest::doubleClickHitsWholePixels_data()
{
    QTest::addColumn<QPointF>("position");
    QTest::addColumn<bool>("inside");

    // The text covers the pixels 10 to 29 across and 20 to 29 down.
    QTest::newRow("first pixel") << QPointF(10, 20) << true;
    QTest::newRow("rounded into the first column") << QPointF(9.5, 25) << true;
    QTest::newRow("left of the first column") << QPointF(9.49, 25) << false;
    QTest::newRow("rounded into the last column") << QPointF(29.49, 29) << true;
    QTest::newRow("rounded past the last column") << QPointF(29.5, 25) << false;
    QTest::newRow("rounded past the last row") << QPointF(20, 29.5) << false;
}

void KnobTest::doubleClickHitsWholePixels()
{
    QFETCH(const QPointF, position);
    QFETCH(const bool, inside);

    Knob knob;
    knob.textRect = QRect(10, 20, 20, 10);
    sendMouse(knob, QEvent::MouseButtonDblClick, position);
    QCOMPARE(!knob.editor->isHidden(), inside);
}

void KnobTest::hiddenTextHasNoEditor()
{
    KnobStage stage;
    QVERIFY(stage.show());
    stage.knob.value = -20;
    stage.knob.showText = false;
    stage.doubleClick({60, 60});
    QCOMPARE(stage.announced(), QList<int>{-80});
    stage.knob.setFocus();
    QTest::keyClick(stage.window.windowHandle(), Qt::Key_Return);
    QVERIFY(stage.knob.editor->isHidden());
}

void KnobTest::shadow()
{
    Knob knob;
    knob.resize(120, 120);
    knob.shadowColor = QColor(0x00, 0xff, 0x7f);
    knob.setShadow(false, 0.25);
    QVERIFY(knob.graphicsEffect() == nullptr);
    knob.setShadow(true, 0.25);
    const auto* effect = qobject_cast<QGraphicsDropShadowEffect*>(knob.graphicsEffect());
    QVERIFY(effect != nullptr);
    QCOMPARE(effect->parent(), &knob);
    QCOMPARE(effect->blurRadius(), 30.0);
    QCOMPARE(effect->offset(), QPointF(0, 0));
    QCOMPARE(effect->color(), QColor(0x00, 0xff, 0x7f));
    knob.setShadow(false, 0.5);
    QCOMPARE(knob.graphicsEffect(), effect);
    QVERIFY(effect->isEnabled());
}

QUORVEL_TEST_MAIN(KnobTest)

#include "knob_test.moc"
