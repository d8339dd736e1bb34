#include "settings_fixture.h"

#include "support/background_lines.h"
#include "support/settings_files.h"
#include "support/trace_text.h"

#include <QComboBox>
#include <QLabel>

void SettingsFixture::reset()
{
    dialog.reset();
    forgetSettingsFiles();
    // Made anew with each test: the test framework puts its own handler in place before the first.
    debugLog.reset();
    debugLog.emplace();
    IniFile::remove("setting.ini");
    simulated.control().reset();
    simulated.control().plug(SimulatorControl::ka1);
}

void SettingsFixture::create()
{
    dialog = std::make_unique<Settings>();
}

void SettingsFixture::connect(std::uint32_t sampleRate, std::uint32_t bufferSize,
                              std::uint32_t latency)
{
    simulated.control().setEngine(sampleRate, bufferSize, latency);
    create();
    if (!dialog->connectDevice())
        qFatal("the dialog finds no device");
    simulated.control().clearTrace();
    log().clear();
}

QComboBox* SettingsFixture::combo(int index) const
{
    return dialog->findChildren<QComboBox*>().value(index);
}

QLabel* SettingsFixture::label(const char* text) const
{
    const auto labels = dialog->findChildren<QLabel*>();
    for (QLabel* label : labels) {
        if (label->text() == QLatin1String(text))
            return label;
    }
    return nullptr;
}

QStringList SettingsFixture::takeTrace()
{
    QStringList lines = simulated.takeTrace();
    lines.removeAll(TraceText::request(1, 0xFFDC20C0, 7));
    return lines;
}

QStringList SettingsFixture::takeLog()
{
    return withoutBackground(log().take());
}

QString SettingsFixture::stored(const char* key) const
{
    return IniFile::read("setting.ini").value(QLatin1String(key));
}
