#include "controls/knob.h"
#include "marking_translator.h"
#include "panel_fixture.h"
#include "panel_text.h"
#include "support/test_main.h"

#include <QLabel>
#include <QTest>

/// Where the panels' controls stand and how they look.
class PanelLayoutTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { fixture.plug(SimulatorControl::ka1); }
    void tree_data();
    void tree();
    void nothingIsMisplaced_data() { addModelRows(); }
    void nothingIsMisplaced();
    void phoneReadOutStandsBesideItsKnob();
    void translatedTexts_data();
    void translatedTexts();

private:
    PanelFixture fixture;
};

namespace {

QStringList ka1Tree()
{
    return {
        R"(row centred margins 0 0 0 0)",
        R"(  column margins 10 10 20 10)",
        R"(    label centred "INPUT" font-weight: bold; font-size: 12px; color: white;)",
        R"(    knob Dial/MicValue 120x120 0..42 arc 7 #f1fa8c text 12 #00ff7f #00ff7f in the middle)",
        R"(    label centred "-160 dB" color: #888888; font-size: 8px;)",
        R"(    label centred "Gain" font-size: 12px; color: white;)",
        R"(    column centred margins 0 0 0 0 stretched 1)",
        R"(      button Button/MicInstrIsChecked "MIC" #00ff7f style 10 80x0 in the middle)",
        R"(      button Button/Mic20dBIsChecked "20dB" #ff7f00 style 10 80x0 in the middle)",
        R"(      button Button/Mic48VIsChecked "48V" #ff1111 style 10 80x0 in the middle)",
        R"(      button Button/MonitorMicIsChecked "DIRECT" #00FFFF style 10 80x0 in the middle)",
        R"(  sunken line, width 1, background-color: #555555;)",
        R"(  column centred margins 20 10 10 10)",
        R"(    label centred "HEADPHONE" font-weight: bold; font-size: 12px; color: white;)",
        R"(    row centred margins 0 0 0 0)",
        R"(      knob Dial/HeadphoneValue 120x120 -80..6 arc 7 #00ffff text 12 #00ff7f #00ff7f in the middle)",
        R"(    label centred "Volume" font-size: 12px; color: white;)",
        R"(    row centred margins 0 0 0 0)",
        R"(      button Button/HeadphoneMuteIsChecked "MUTE" #00FFFF style 10 80x40 in the middle)",
        R"(      button Button/HeadphoneDimIsChecked "DIM" #00FFFF style 10 80x40 in the middle)",
        R"(    row centred margins 0 0 0 0)",
        R"(      knob Dial/OtgToHpValue 70x70 -80..6 arc 3 #00ffff text 10 #00ff7f #00ff7f in the middle)",
        R"(      column centred margins 0 0 0 0)",
        R"(        label centred "-160 dB" color: #888888; font-size: 8px;)",
        R"(        label centred "Phone To HP Volume" font-size: 10px; color: white;)",
        R"(    stretch)",
    };
}

QStringList ka2Tree()
{
    return {
        R"(row centred margins 0 0 0 0)",
        R"(  column margins 10 10 20 10)",
        R"(    label centred "MIC1" font-weight: bold; font-size: 12px; color: white;)",
        R"(    knob Dial/Mic1Value 120x120 0..56 shown +9 arc 7 #f1fa8c text 12 #00ff7f #00ff7f in the middle)",
        R"(    label centred "-160 dB" color: #888888; font-size: 8px;)",
        R"(    label centred "Gain" font-size: 12px; color: white;)",
        R"(    button Button/Mic120dBIsChecked "20dB" #ff7f00 style 10 80x0 in the middle)",
        R"(    button Button/Mic148VIsChecked "48V" #ff1111 style 10 80x0 in the middle)",
        R"(    button Button/MonitorMic1IsChecked "DIRECT" #00FFFF style 10 80x0 in the middle)",
        R"(    stretch)",
        R"(  column margins 10 10 20 10)",
        R"(    label centred "MIC2" font-weight: bold; font-size: 12px; color: white;)",
        R"(    knob Dial/Mic2Value 120x120 0..56 shown +9 arc 7 #f1fa8c text 12 #00ff7f #00ff7f in the middle)",
        R"(    label centred "-160 dB" color: #888888; font-size: 8px;)",
        R"(    label centred "Gain" font-size: 12px; color: white;)",
        R"(    button Button/Mic220dBIsChecked "20dB" #ff7f00 style 10 80x0 in the middle)",
        R"(    button Button/Mic248VIsChecked "48V" #ff1111 style 10 80x0 in the middle)",
        R"(    button Button/MonitorMic2IsChecked "DIRECT" #00FFFF style 10 80x0 in the middle)",
        R"(    stretch)",
        R"(  sunken line, width 1, background-color: #555555;)",
        R"(  column margins 20 10 10 10)",
        R"(    label centred "SPEAKER" font-weight: bold; font-size: 12px; color: white;)",
        R"(    row centred margins 0 0 0 0)",
        R"(      knob Dial/SpeakerValue 120x120 -80..6 arc 7 #00ffff text 12 #00ff7f #00ff7f in the middle)",
        R"(    label centred "Volume" font-size: 12px; color: white;)",
        R"(    row centred margins 0 0 0 0)",
        R"(      button Button/SpeakerMuteIsChecked "MUTE" #00FFFF style 12 80x40 in the middle)",
        R"(      button Button/SpeakerDimIsChecked "DIM" #00FFFF style 12 80x40 in the middle)",
        R"(    knob Dial/OtgToSPValue 70x70 -80..6 arc 3 #00ffff text 10 #00ff7f #00ff7f in the middle)",
        R"(    label centred "-160 dB" color: #888888; font-size: 8px;)",
        R"(    label centred "Phone To SP Volume" font-size: 10px; color: white;)",
        R"(  column margins 20 10 10 10)",
        R"(    label centred "HEADPHONE" font-weight: bold; font-size: 12px; color: white;)",
        R"(    row centred margins 0 0 0 0)",
        R"(      knob Dial/HeadphoneValue 120x120 -80..6 arc 7 #00ffff text 12 #00ff7f #00ff7f in the middle)",
        R"(    label centred "Volume" font-size: 12px; color: white;)",
        R"(    row centred margins 0 0 0 0)",
        R"(      button Button/HeadphoneMuteIsChecked "MUTE" #00FFFF style 12 80x40 in the middle)",
        R"(      button Button/HeadphoneDimIsChecked "DIM" #00FFFF style 12 80x40 in the middle)",
        R"(    knob Dial/OtgToHpValue 70x70 -80..6 arc 3 #00ffff text 10 #00ff7f #00ff7f in the middle)",
        R"(    label centred "-160 dB" color: #888888; font-size: 8px;)",
        R"(    label centred "Phone To HP Volume" font-size: 10px; color: white;)",
    };
}

/// The styles of this model's captions begin with a blank.
QStringList ksTree()
{
    return {
        R"(row centred margins 0 0 0 0)",
        R"(  column margins 10 10 20 10)",
        R"(    label centred "MIC" font-weight: bold; font-size: 12px; color: white;)",
        R"(    knob Dial/MicValue 120x120 0..42 arc 7 #f1fa8c text 12 #00ff7f #00ff7f in the middle)",
        R"(    label centred "-160 dB" color: #888888; font-size: 8px;)",
        R"(    label centred "Gain"  font-size: 12px; color: white;)",
        R"(    button Button/MonitorMicIsChecked "DIRECT" #00FFFF style 10 80x0 in the middle)",
        R"(    stretch)",
        R"(  sunken line, width 1, background-color: #555555;)",
        R"(  column margins 20 10 10 10)",
        R"(    label centred "HEADPHONE" font-weight: bold; font-size: 12px; color: white;)",
        R"(    row centred margins 0 0 0 0)",
        R"(      knob Dial/HeadphoneValue 120x120 -80..6 arc 7 #00ffff text 12 #00ff7f #00ff7f in the middle)",
        R"(    label centred "Volume"  font-size: 12px; color: white;)",
        R"(    row centred margins 0 0 0 0)",
        R"(      button Button/HeadphoneMuteIsChecked "MUTE" #00FFFF style 12 80x40 in the middle)",
        R"(      button Button/HeadphoneDimIsChecked "DIM" #00FFFF style 12 80x40 in the middle)",
    };
}

} // namespace

void PanelLayoutTest::tree_data()
{
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("ka1") << ka1Tree();
    QTest::newRow("ka2") << ka2Tree();
    QTest::newRow("ks") << ksTree();
}

void PanelLayoutTest::tree()
{
    QFETCH(QStringList, expected);
    fixture.start(QString(QTest::currentDataTag()));
    QCOMPARE(PanelText::tree(*fixture.panel), expected);
}

void PanelLayoutTest::nothingIsMisplaced()
{
    fixture.start(QString(QTest::currentDataTag()));
    fixture.settle();
    QCOMPARE(PanelText::misplaced(*fixture.panel), QStringList());
}

void PanelLayoutTest::phoneReadOutStandsBesideItsKnob()
{
    fixture.start("ka1");
    fixture.settle();
    const QRect knob = fixture.knob("Dial/OtgToHpValue")->geometry();
    QCOMPARE(fixture.label(1)->geometry().left() - knob.right() - 1, 8);
}

void PanelLayoutTest::translatedTexts_data()
{
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("ka1") << QStringList{"<INPUT>",
                                        "<-160 dB>",
                                        "<Gain>",
                                        "<MIC>",
                                        "<20dB>",
                                        "<48V>",
                                        "<DIRECT>",
                                        "<HEADPHONE>",
                                        "<Volume>",
                                        "<MUTE>",
                                        "<DIM>",
                                        "<-160 dB>",
                                        "<Phone To HP Volume>"};
    const QStringList mic{"-160 dB", "<Gain>", "20dB", "48V", "<DIRECT>"};
    const QStringList output{"<Volume>", "MUTE", "DIM", "-160 dB"};
    QTest::newRow("ka2") << QStringList{"<MIC1>"} + mic + QStringList{"<MIC2>"} + mic +
                                QStringList{"<SPEAKER>"} + output +
                                QStringList{"<Phone To SP Volume>", "<HEADPHONE>"} + output +
                                QStringList{"<Phone To HP Volume>"};
    QTest::newRow("ks") << QStringList{"<MIC>",     "-160 dB",  "<Gain>", "<DIRECT>",
                                       "HEADPHONE", "<Volume>", "MUTE",   "DIM"};
}

/// Units, MUTE and DIM stay as they are in every language, but for the first model.
void PanelLayoutTest::translatedTexts()
{
    QFETCH(QStringList, expected);
    const MarkingTranslator translator;
    fixture.start(QString(QTest::currentDataTag()));
    QCOMPARE(PanelText::texts(*fixture.panel), expected);
}

QUORVEL_TEST_MAIN(PanelLayoutTest)
#include "panel_layout_test.moc"
