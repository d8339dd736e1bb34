#include "fuzz/fuzzing.h"
#include "oracle/ini_values.h"
#include "random/program.h"
#include "random/record.h"
#include "random/virtual_files.h"
#include "random/virtual_platform.h"
#include "random/virtual_time.h"
#include "settings/settings.h"

#include <QComboBox>

#include <array>
#include <cstdlib>
#include <memory>

// The dialog's INI file, read when an interface comes. A text that is none of a choice's items
// must leave the choice alone, one that is must be taken, and a second arrival must change nothing.

namespace {

constexpr std::array keys{"Audio/BufferSize", "USB/LatencySize", "Audio/SampleRate",
                          "USB/SlowMode"};
const QString fileName = QStringLiteral("setting.ini");

std::unique_ptr<Settings> dialog;

QStringList arrive()
{
    VirtualPlatform::interface() = Oracle::Interface();
    VirtualPlatform::interface().plug(1, 0);
    Fuzzing::require(dialog->connectDevice(), "the device answers");
    dialog->refreshFromDevice();
    VirtualTime::instance().run(1000);
    QStringList texts;
    const auto combos = dialog->findChildren<QComboBox*>();
    for (const QComboBox* combo : combos)
        texts.append(combo->currentText());
    return texts;
}

void startDialog()
{
    dialog = std::make_unique<Settings>();
    // Before the pipe is gone.
    std::atexit([] { dialog.reset(); });
    Fuzzing::require(VirtualPlatform::pipeIsServed(), "the pipe is served");
}

/// What the oracle reads in the file as it is now.
void compareWithFile(const QStringList& texts)
{
    const Oracle::IniFile file = Oracle::parseIni(VirtualFiles::read(fileName.toStdString()));
    const auto combos = dialog->findChildren<QComboBox*>();
    for (qsizetype i = 0; i < texts.size(); ++i) {
        Fuzzing::require(combos[i]->findText(texts[i]) >= 0, "the choice is one of the items");
        const QString text = QString::fromStdString(
            Oracle::textValue(file, keys.at(static_cast<std::size_t>(i)), std::string()));
        Fuzzing::require(combos[i]->findText(text) < 0 || text == texts[i],
                         "the stored choice is shown");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    Fuzzing::begin(*argc, *argv);
    startDialog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    VirtualFiles::remove(fileName.toStdString());
    arrive();
    VirtualFiles::write(fileName.toStdString(), std::string(Fuzzing::text(data, size)));
    const QStringList texts = arrive();
    compareWithFile(texts);
    Fuzzing::require(arrive() == texts, "a second arrival changes nothing");
    Record::takeEvents();
    Record::takeThreadLines();
    return 0;
}
