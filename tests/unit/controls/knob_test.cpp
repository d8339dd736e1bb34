#include "support/test_main.h"
#include "unit/controls/knob_stage.h"

#include <QGraphicsDropShadowEffect>
#include <QLineEdit>
#include <QMetaMethod>
#include <QTest>

#include <limits>

class KnobTest : public QObject
{
    Q_OBJECT

private slots:
    void defaults();
    void metaObjectNames();
    void setValueLimitsAndAnnounces_data();
    void setValueLimitsAndAnnounces();
    void setValueRepaints();
    void pushedValueYieldsToTheHand();
    void wheelSteps_data();
    void wheelSteps();
    void wheelIgnoresTheSizeOfTheDelta();
    void wheelStaysWithTheKnob();
    void shadow();
    void shadowOffDoesNothing();
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
    QCOMPARE(knob.lastPos.y, 0);
    QCOMPARE(knob.lastPos.x, 0);
    QCOMPARE(knob.hovered, false);
    QCOMPARE(knob.displayOffset, 0);
    QVERIFY(knob.editor != nullptr);
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
    QTest::newRow("inside") << -80 << 6 << -20 << -20;
    QTest::newRow("unchanged") << -80 << 6 << -80 << -80;
    QTest::newRow("at the maximum") << -80 << 6 << 6 << 6;
    QTest::newRow("above") << -80 << 6 << 7 << 6;
    QTest::newRow("below") << -80 << 6 << -81 << -80;
    QTest::newRow("far above") << -80 << 6 << highest << 6;
    QTest::newRow("far below") << -80 << 6 << lowest << -80;
    QTest::newRow("gain range") << 0 << 42 << -5 << 0;
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

void KnobTest::setValueRepaints()
{
    KnobStage stage;
    QVERIFY(stage.show());
    const QRect before = stage.knob.textRect;
    stage.knob.setValue(0);
    QTRY_VERIFY(stage.knob.textRect.width() < before.width());
}

void KnobTest::pushedValueYieldsToTheHand()
{
    KnobStage stage;
    QVERIFY(stage.show());

    stage.move({60, 60});
    QVERIFY(stage.knob.hovered);
    stage.knob.setValueIfIdle(-10);
    QCOMPARE(stage.knob.value, -80);
    QCOMPARE(stage.announced(), QList<int>{});

    stage.move({170, 60});
    QVERIFY(!stage.knob.hovered);
    stage.knob.setValueIfIdle(-10);
    QCOMPARE(stage.knob.value, -10);
    stage.knob.setValueIfIdle(100);
    QCOMPARE(stage.knob.value, 6);
    QCOMPARE(stage.announced(), (QList<int>{-10, 6}));
}

void KnobTest::wheelSteps_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<QPoint>("delta");
    QTest::addColumn<int>("expected");

    QTest::newRow("up") << -20 << QPoint(0, 120) << -19;
    QTest::newRow("down") << -20 << QPoint(0, -120) << -21;
    QTest::newRow("horizontal") << -20 << QPoint(120, 0) << -21;
    QTest::newRow("horizontal, other way") << -20 << QPoint(-120, 0) << -21;
    QTest::newRow("nothing at all") << -20 << QPoint(0, 0) << -21;
    QTest::newRow("up at the maximum") << 6 << QPoint(0, 120) << 6;
    QTest::newRow("down at the minimum") << -80 << QPoint(0, -120) << -80;
    QTest::newRow("horizontal at the minimum") << -80 << QPoint(120, 0) << -80;
}

void KnobTest::wheelSteps()
{
    QFETCH(const int, start);
    QFETCH(const QPoint, delta);
    QFETCH(const int, expected);

    KnobStage stage;
    stage.knob.value = start;
    stage.wheel(delta);
    QCOMPARE(stage.knob.value, expected);
    QCOMPARE(stage.announced(), QList<int>{expected});
}

void KnobTest::wheelIgnoresTheSizeOfTheDelta()
{
    KnobStage stage;
    stage.knob.value = -20;
    stage.wheel({0, 1});
    stage.wheel({0, 1200});
    stage.wheel({0, -1});
    stage.wheel({500, 960});
    QCOMPARE(stage.announced(), (QList<int>{-19, -18, -19, -18}));
}

void KnobTest::wheelStaysWithTheKnob()
{
    KnobStage stage;
    QVERIFY(stage.wheel({0, 120}));
    QVERIFY(stage.wheel({120, 0}));
}

void KnobTest::shadow()
{
    Knob knob;
    knob.resize(120, 120);
    knob.shadowColor = QColor(0x00, 0xff, 0x7f);
    knob.setShadow(true, 0.25);
    const auto* effect = qobject_cast<QGraphicsDropShadowEffect*>(knob.graphicsEffect());
    QVERIFY(effect != nullptr);
    QCOMPARE(effect->parent(), &knob);
    QCOMPARE(effect->blurRadius(), 30.0);
    QCOMPARE(effect->offset(), QPointF(0, 0));
    QCOMPARE(effect->color(), QColor(0x00, 0xff, 0x7f));
    QVERIFY(effect->isEnabled());
}

void KnobTest::shadowOffDoesNothing()
{
    Knob knob;
    knob.setShadow(false, 0.25);
    QVERIFY(knob.graphicsEffect() == nullptr);

    knob.setShadow(true, 0.25);
    const QGraphicsEffect* effect = knob.graphicsEffect();
    knob.setShadow(false, 0.5);
    QCOMPARE(knob.graphicsEffect(), effect);
    QVERIFY(effect->isEnabled());
}

QUORVEL_TEST_MAIN(KnobTest)

#include "knob_test.moc"
