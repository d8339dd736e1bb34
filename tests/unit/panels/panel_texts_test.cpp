#include "controls/button.h"
#include "controls/knob.h"
#include "panel_fixture.h"
#include "support/test_main.h"

#include <QTest>

#include <algorithm>
#include <climits>

namespace {

struct KnobKey
{
    const char* name;
    int missing;
    int minimum;
    int maximum;
};

struct Model
{
    const char* name;
    std::uint32_t productId;
    QList<KnobKey> knobs;
    QList<QByteArray> buttons;
};

const QList<Model> models{
    {"ka1",
     SimulatorControl::ka1,
     {{"Dial/MicValue", 0, 0, 42},
      {"Dial/HeadphoneValue", -80, -80, 6},
      {"Dial/OtgToHpValue", 0, -80, 6}},
     {"Button/MicInstrIsChecked", "Button/Mic20dBIsChecked", "Button/Mic48VIsChecked",
      "Button/MonitorMicIsChecked", "Button/HeadphoneMuteIsChecked",
      "Button/HeadphoneDimIsChecked"}},
    {"ka2",
     SimulatorControl::ka2,
     {{"Dial/Mic1Value", 0, 0, 56},
      {"Dial/Mic2Value", 0, 0, 56},
      {"Dial/SpeakerValue", -80, -80, 6},
      {"Dial/HeadphoneValue", -80, -80, 6},
      {"Dial/OtgToHpValue", 0, -80, 6},
      {"Dial/OtgToSPValue", 0, -80, 6}},
     {"Button/Mic120dBIsChecked", "Button/Mic148VIsChecked", "Button/MonitorMic1IsChecked",
      "Button/Mic220dBIsChecked", "Button/Mic248VIsChecked", "Button/MonitorMic2IsChecked",
      "Button/SpeakerMuteIsChecked", "Button/SpeakerDimIsChecked", "Button/HeadphoneMuteIsChecked",
      "Button/HeadphoneDimIsChecked"}},
    {"ks",
     SimulatorControl::ks,
     {{"Dial/MicValue", 0, 0, 42}, {"Dial/HeadphoneValue", -80, -80, 6}},
     {"Button/MonitorMicIsChecked", "Button/HeadphoneMuteIsChecked",
      "Button/HeadphoneDimIsChecked"}},
};

constexpr int noNumber = INT_MIN + 1;

struct NumberText
{
    QByteArray text;
    int number;
};

struct SwitchText
{
    QByteArray text;
    bool on;
};

const QByteArray hugeNumber(100000, '9');

const QList<NumberText> numberTexts{
    {"3", 3},
    {"-7", -7},
    {"2147483647", 2147483647},
    {"-2147483648", INT_MIN},
    {"2147483648", noNumber},
    {"-2147483649", noNumber},
    {"4294967302", noNumber},
    {"4294967338", noNumber},
    {"-4294967290", noNumber},
    {"9223372036854775807", noNumber},
    {"18446744073709551622", noNumber},
    {hugeNumber, noNumber},
    {"\" 5\"", 5},
    {"\"5 \"", 5},
    {"5.0", noNumber},
    {"1e3", noNumber},
    {"0x10", noNumber},
    {"12abc", noNumber},
    {"3dB", noNumber},
    {"", noNumber},
    {"\"\"", noNumber},
    {"true", noNumber},
    {"1, 2", noNumber},
    {"5,", noNumber},
    {"@Invalid()", noNumber},
    {"@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x5)", noNumber},            // an integer
    {"@Variant(\\0\\0\\0\\x6@\\x14\\0\\0\\0\\0\\0\\0)", noNumber}, // a double
    {"@ByteArray(5)", noNumber},
};

const QList<SwitchText> switchTexts{
    {"true", true},
    {"TRUE", true},
    {"1", true},
    {"-1", true},
    {"2147483647", true},
    {"false", false},
    {"0", false},
    {"", false},
    {"on", false},
    {"yes", false},
    {"truer", false},
    {"2147483648", false},
    {"4294967296", false},
    {"4294967297", false},
    {hugeNumber, false},
    {"1.0", false},
    {"0x1", false},
    {"1 dB", false},
    {"true, true", false},
    {"@Invalid()", false},
    {"@Variant(\\0\\0\\0\\x1\\x1)", false}, // a boolean
    {"tr\\x1e", false},
};

} // namespace

/// What each text of a damaged INI file means to the controls of each model.
class PanelTextsTest : public QObject
{
    Q_OBJECT

private slots:
    void numbers_data() { addModels(); }
    void numbers();
    void switches_data() { addModels(); }
    void switches();

private:
    static void addModels();
    /// A panel on a file with these texts, handed out to the keys from the first on.
    void start(const Model& model, const QList<QByteArray>& keys, const QList<QByteArray>& texts);

    PanelFixture fixture;
};

void PanelTextsTest::addModels()
{
    QTest::addColumn<int>("index");
    for (int index = 0; index < models.size(); ++index)
        QTest::newRow(models[index].name) << index;
}

void PanelTextsTest::start(const Model& model, const QList<QByteArray>& keys,
                           const QList<QByteArray>& texts)
{
    fixture.plug(model.productId);
    QByteArray bytes;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        const qsizetype slash = keys[i].indexOf('/');
        bytes += '[' + keys[i].left(slash) + "]\n" + keys[i].mid(slash + 1) + '=' + texts[i] + '\n';
    }
    IniFile::writeRaw(QString(model.name) + ".ini", bytes);
    fixture.start(QString(model.name));
}

/// A text that is no `int` counts as missing; a number out of range goes to the end of the range.
void PanelTextsTest::numbers()
{
    QFETCH(const int, index);
    const Model& model = models[index];
    QList<QByteArray> keys;
    for (const KnobKey& knob : model.knobs)
        keys.append(knob.name);
    for (qsizetype first = 0; first < numberTexts.size(); first += keys.size()) {
        const QList<NumberText> rows = numberTexts.mid(first, keys.size());
        QList<QByteArray> texts;
        for (const NumberText& row : rows)
            texts.append(row.text);
        start(model, keys, texts);
        for (qsizetype i = 0; i < rows.size(); ++i) {
            const KnobKey& knob = model.knobs[i];
            const int number = rows[i].number;
            const int expected =
                number == noNumber ? knob.missing : std::clamp(number, knob.minimum, knob.maximum);
            const int value = fixture.knob(knob.name)->value;
            QVERIFY2(value == expected,
                     keys[i] + '=' + texts[i].left(40) + " gives " + QByteArray::number(value));
            QCOMPARE(IniFile::read(QString(model.name) + ".ini").value(knob.name),
                     QString::number(expected));
        }
    }
}

/// Nothing but a clear yes switches anything on.
void PanelTextsTest::switches()
{
    QFETCH(const int, index);
    const Model& model = models[index];
    const QList<QByteArray>& keys = model.buttons;
    for (qsizetype first = 0; first < switchTexts.size(); first += keys.size()) {
        const QList<SwitchText> rows = switchTexts.mid(first, keys.size());
        QList<QByteArray> texts;
        for (const SwitchText& row : rows)
            texts.append(row.text);
        start(model, keys, texts);
        for (qsizetype i = 0; i < rows.size(); ++i) {
            const bool on = fixture.button(keys[i])->on;
            QVERIFY2(on == rows[i].on, keys[i] + '=' + texts[i].left(40));
            QCOMPARE(IniFile::read(QString(model.name) + ".ini").value(keys[i]),
                     QVariant(on).toString());
        }
    }
}

QUORVEL_TEST_MAIN(PanelTextsTest)
#include "panel_texts_test.moc"
