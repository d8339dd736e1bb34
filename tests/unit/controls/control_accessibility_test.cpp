#include "controls/button.h"
#include "controls/control_accessibility.h"
#include "controls/knob.h"
#include "controls/read_out.h"
#include "support/test_main.h"

#include <QAccessible>
#include <QLineEdit>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

namespace {

/// What the toolkit has told assistive programs.
QStringList told;

/// What nobody sees is not told of.
template <typename Control> Control& shown(Control& control)
{
    control.show();
    told.clear();
    return control;
}

/// Reads 0 at 0 and 10 at 1, as the gains of the KA2.
class OffsetKnob : public Knob
{
public:
    OffsetKnob()
    {
        minimum = 0;
        maximum = 56;
        displayOffset = 9;
        value = 0;
    }
};

void note(QAccessibleEvent* event)
{
    // Of other kinds there are some for what is being destroyed and has no interface any more.
    const auto name = [event] { return event->accessibleInterface()->text(QAccessible::Name); };
    if (event->type() == QAccessible::ValueChanged)
        told.append(name() + " value " +
                    static_cast<QAccessibleValueChangeEvent*>(event)->value().toString());
    else if (event->type() == QAccessible::StateChanged)
        told.append(name() + " state");
    else if (event->type() == QAccessible::NameChanged)
        told.append(name() + " name");
}

/// As when a screen reader comes or goes.
void listen(bool active)
{
    QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(active);
}

QAccessibleInterface& interfaceOf(QObject& object)
{
    return *QAccessible::queryAccessibleInterface(&object);
}

} // namespace

/// The controls as a screen reader finds them.
class ControlAccessibilityTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init() { told.clear(); }
    void knob();
    void knobWithAnOffset();
    void editorHasItsKnobsName();
    void knobIsSet();
    void stepsGetAcrossTheGapBesideZero();
    void knobTellsChanges();
    void knobTellsWhatTheMouseDoes();
    void button();
    void buttonIsPressed_data();
    void buttonIsPressed();
    void buttonTellsChanges();
    void readOut();
    void nobodyListens();
};

void ControlAccessibilityTest::initTestCase()
{
    ControlAccessibility::install();
    ControlAccessibility::install();
    listen(true);
    QAccessible::installUpdateHandler(note);
}

void ControlAccessibilityTest::knob()
{
    Knob knob;
    knob.setAccessibleName("MIC1 Gain");
    knob.value = -20;
    QAccessibleInterface& face = interfaceOf(knob);
    QCOMPARE(face.role(), QAccessible::Slider);
    QCOMPARE(face.text(QAccessible::Name), QString("MIC1 Gain"));
    QCOMPARE(face.text(QAccessible::Value), QString("-20dB"));
    QVERIFY(face.state().focusable);
    QVERIFY(face.textInterface() == nullptr);
    const auto* const value = face.valueInterface();
    QCOMPARE(value->currentValue().toInt(), -20);
    QCOMPARE(value->minimumValue().toInt(), -80);
    QCOMPARE(value->maximumValue().toInt(), 6);
    QCOMPARE(value->minimumStepSize().toInt(), 1);
}

void ControlAccessibilityTest::knobWithAnOffset()
{
    OffsetKnob knob;
    QAccessibleInterface& face = interfaceOf(knob);
    QCOMPARE(face.text(QAccessible::Value), QString("0dB"));
    QCOMPARE(face.valueInterface()->minimumValue().toInt(), 0);
    QCOMPARE(face.valueInterface()->maximumValue().toInt(), 65);
    knob.value = 1;
    QCOMPARE(face.text(QAccessible::Value), QString("10dB"));
    QCOMPARE(face.valueInterface()->currentValue().toInt(), 10);
}

void ControlAccessibilityTest::editorHasItsKnobsName()
{
    Knob knob;
    knob.setAccessibleName("MIC1 Gain");
    knob.textRect = QRect(0, 0, 50, 20);
    QTest::mouseDClick(&knob, Qt::LeftButton, {}, QPoint(5, 5));
    QCOMPARE(interfaceOf(*knob.editor).text(QAccessible::Name), QString("MIC1 Gain"));
}

void ControlAccessibilityTest::knobIsSet()
{
    OffsetKnob knob;
    knob.value = 3;
    const QSignalSpy spy(&knob, &Knob::valueChangedSig);
    auto* const value = interfaceOf(knob).valueInterface();
    value->setCurrentValue(20);
    QCOMPARE(knob.value, 11);
    value->setCurrentValue(1000);
    QCOMPARE(knob.value, 56);
    value->setCurrentValue(0);
    QCOMPARE(knob.value, 0);
    QCOMPARE(spy.count(), 3);
}

/// Who steps by one from what is read must get on, in both directions: 0 is followed by 10.
void ControlAccessibilityTest::stepsGetAcrossTheGapBesideZero()
{
    OffsetKnob knob;
    auto* const value = interfaceOf(knob).valueInterface();
    value->setCurrentValue(1);
    QCOMPARE(knob.value, 1);
    QCOMPARE(value->currentValue().toInt(), 10);
    value->setCurrentValue(9);
    QCOMPARE(knob.value, 0);
    value->setCurrentValue(0);
    QCOMPARE(knob.value, 0);
}

void ControlAccessibilityTest::knobTellsChanges()
{
    Knob knob;
    knob.setAccessibleName("Gain");
    knob.displayOffset = 9;
    knob.setValue(-70);
    knob.setValue(-80);
    QCOMPARE(told, QStringList{"Gain name"});
    shown(knob);
    knob.setValue(-80);
    QCOMPARE(told, QStringList{});
    knob.setValue(-20);
    QCOMPARE(told, QStringList{"Gain value -11"});
}

void ControlAccessibilityTest::knobTellsWhatTheMouseDoes()
{
    Knob knob;
    knob.setAccessibleName("Gain");
    shown(knob);
    const auto wheel = [&knob](int delta) {
        QWheelEvent event({}, {}, {}, {0, delta}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                          false);
        QCoreApplication::sendEvent(&knob, &event);
    };
    wheel(-120);
    QCOMPARE(told, QStringList{});
    wheel(120);
    QCOMPARE(told, QStringList{"Gain value -79"});
    told.clear();
    QMouseEvent drag(QEvent::MouseMove, QPointF(1, 0), QPointF(1, 0), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(&knob, &drag);
    QCOMPARE(told, QStringList{"Gain value -78"});
}

void ControlAccessibilityTest::button()
{
    Button button(QStringLiteral("48V"));
    QAccessibleInterface& face = interfaceOf(button);
    // Of no other role Windows hears that it was switched.
    QCOMPARE(face.role(), QAccessible::CheckBox);
    QCOMPARE(face.text(QAccessible::Name), QString("48V"));
    button.setAccessibleName("MIC1 48V");
    QCOMPARE(face.text(QAccessible::Name), QString("MIC1 48V"));
    QVERIFY(face.state().checkable);
    QVERIFY(!face.state().checked);
    QVERIFY(face.state().focusable);
    button.setOn(true);
    QVERIFY(face.state().checked);
}

void ControlAccessibilityTest::buttonIsPressed_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("announced");
    QTest::newRow("press") << QAccessibleActionInterface::pressAction() << 2;
    QTest::newRow("toggle") << QAccessibleActionInterface::toggleAction() << 2;
    QTest::newRow("focus") << QAccessibleActionInterface::setFocusAction() << 0;
}

void ControlAccessibilityTest::buttonIsPressed()
{
    QFETCH(QString, action);
    QFETCH(int, announced);
    Button button(QStringLiteral("48V"));
    const QSignalSpy spy(&button, &Button::pressed);
    QAccessibleActionInterface* const actions = interfaceOf(button).actionInterface();
    QVERIFY(actions->actionNames().contains(action));
    actions->doAction(action);
    QCOMPARE(spy.count(), announced);
    QCOMPARE(button.on, announced != 0);
}

void ControlAccessibilityTest::buttonTellsChanges()
{
    Button button(QStringLiteral("48V"));
    told.clear();
    button.setOn(true);
    button.setOn(false);
    QCOMPARE(told, QStringList{});
    shown(button);
    button.setOn(false);
    QCOMPARE(told, QStringList{});
    button.press();
    QCOMPARE(told, QStringList{"48V state"});
}

void ControlAccessibilityTest::readOut()
{
    ReadOut readOut(QStringLiteral("-160 dB"));
    readOut.setAccessibleName("MIC1 Level");
    told.clear();
    QAccessibleInterface& face = interfaceOf(readOut);
    QCOMPARE(face.role(), QAccessible::StaticText);
    QCOMPARE(face.text(QAccessible::Name), QString("MIC1 Level -160 dB"));
    readOut.setText("-40.0 dB");
    QCOMPARE(face.text(QAccessible::Name), QString("MIC1 Level -40.0 dB"));
    QCOMPARE(told, QStringList{});
}

void ControlAccessibilityTest::nobodyListens()
{
    listen(false);
    Knob knob;
    shown(knob).setValue(-20);
    Button button(QStringLiteral("48V"));
    shown(button).press();
    listen(true);
    QCOMPARE(told, QStringList{});
}

QUORVEL_TEST_MAIN(ControlAccessibilityTest)

#include "control_accessibility_test.moc"
