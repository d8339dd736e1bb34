#include "controls/control_accessibility.h"
#include "controls/read_out.h"
#include "marking_translator.h"
#include "panel_fixture.h"
#include "support/test_main.h"

#include <QAccessible>
#include <QTest>

/// What screen readers call the controls and read-outs of a panel.
class PanelNamesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ControlAccessibility::install(); }
    void names_data();
    void names();
    void stepsAreHeard();

private:
    QStringList named() const;

    PanelFixture fixture;
};

/// "key: name" of everything that can be worked or read, in the order of the keyboard, read-outs
/// last.
QStringList PanelNamesTest::named() const
{
    QStringList list;
    const auto add = [&](QWidget* widget) {
        list.append(widget->objectName() + ": " +
                    QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name));
    };
    QWidget* const panel = fixture.panel.get();
    for (QWidget* next = panel->nextInFocusChain(); next != panel;
         next = next->nextInFocusChain()) {
        if (next->parentWidget() == panel && next->focusPolicy() != Qt::NoFocus)
            add(next);
    }
    for (ReadOut* readOut : panel->findChildren<ReadOut*>())
        add(readOut);
    return list;
}

void PanelNamesTest::names_data()
{
    QTest::addColumn<std::uint32_t>("productId");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("ka1") << std::uint32_t{1}
                         << QStringList{"Dial/MicValue: <INPUT> <Gain>",
                                        "Button/MicInstrIsChecked: <INPUT> <INST>",
                                        "Button/Mic20dBIsChecked: <INPUT> <20dB>",
                                        "Button/Mic48VIsChecked: <INPUT> <48V>",
                                        "Button/MonitorMicIsChecked: <INPUT> <DIRECT>",
                                        "Dial/HeadphoneValue: <HEADPHONE> <Volume>",
                                        "Button/HeadphoneMuteIsChecked: <HEADPHONE> <MUTE>",
                                        "Button/HeadphoneDimIsChecked: <HEADPHONE> <DIM>",
                                        "Dial/OtgToHpValue: <Phone To HP Volume>",
                                        ": <INPUT> <Level> <-160 dB>",
                                        ": <Phone To HP Volume> <Level> <-160 dB>"};
    QTest::newRow("ka2") << std::uint32_t{2}
                         << QStringList{"Dial/Mic1Value: <MIC1> <Gain>",
                                        "Button/Mic120dBIsChecked: <MIC1> 20dB",
                                        "Button/Mic148VIsChecked: <MIC1> 48V",
                                        "Button/MonitorMic1IsChecked: <MIC1> <DIRECT>",
                                        "Dial/Mic2Value: <MIC2> <Gain>",
                                        "Button/Mic220dBIsChecked: <MIC2> 20dB",
                                        "Button/Mic248VIsChecked: <MIC2> 48V",
                                        "Button/MonitorMic2IsChecked: <MIC2> <DIRECT>",
                                        "Dial/SpeakerValue: <SPEAKER> <Volume>",
                                        "Button/SpeakerMuteIsChecked: <SPEAKER> MUTE",
                                        "Button/SpeakerDimIsChecked: <SPEAKER> DIM",
                                        "Dial/OtgToSPValue: <Phone To SP Volume>",
                                        "Dial/HeadphoneValue: <HEADPHONE> <Volume>",
                                        "Button/HeadphoneMuteIsChecked: <HEADPHONE> MUTE",
                                        "Button/HeadphoneDimIsChecked: <HEADPHONE> DIM",
                                        "Dial/OtgToHpValue: <Phone To HP Volume>",
                                        ": <MIC1> <Level> -160 dB",
                                        ": <MIC2> <Level> -160 dB",
                                        ": <Phone To SP Volume> <Level> -160 dB",
                                        ": <Phone To HP Volume> <Level> -160 dB"};
    QTest::newRow("ks") << std::uint32_t{15}
                        << QStringList{"Dial/MicValue: <MIC> <Gain>",
                                       "Button/MonitorMicIsChecked: <MIC> <DIRECT>",
                                       "Dial/HeadphoneValue: HEADPHONE <Volume>",
                                       "Button/HeadphoneMuteIsChecked: HEADPHONE MUTE",
                                       "Button/HeadphoneDimIsChecked: HEADPHONE DIM",
                                       ": <MIC> <Level> -160 dB"};
}

void PanelNamesTest::names()
{
    QFETCH(const std::uint32_t, productId);
    QFETCH(const QStringList, expected);
    const MarkingTranslator translator;
    fixture.plug(productId);
    fixture.start(QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(named(), expected);
}

/// A screen reader's own step goes the way of the wheel.
void PanelNamesTest::stepsAreHeard()
{
    fixture.plug(SimulatorControl::ka1);
    fixture.start("ka1");
    fixture.settle();
    fixture.wheel("Dial/MicValue", true);
    const QStringList byWheel = fixture.takeTrace();
    fixture.wheel("Dial/MicValue", false);
    fixture.takeTrace();
    auto* const knob = fixture.panel->findChild<QWidget*>("Dial/MicValue");
    auto* const value = QAccessible::queryAccessibleInterface(knob)->valueInterface();
    value->setCurrentValue(value->currentValue().toInt() + 1);
    QVERIFY(!byWheel.isEmpty());
    QCOMPARE(fixture.takeTrace(), byWheel);
}

QUORVEL_TEST_MAIN(PanelNamesTest)

#include "panel_names_test.moc"
