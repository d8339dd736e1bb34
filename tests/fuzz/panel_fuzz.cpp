#include "controls/button.h"
#include "controls/knob.h"
#include "fuzz/fuzzing.h"
#include "oracle/ini_values.h"
#include "panels/ka1.h"
#include "panels/ka2.h"
#include "panels/ks.h"
#include "random/program.h"
#include "random/virtual_files.h"
#include "random/virtual_platform.h"
#include "support/panel_table.h"

#include <QFile>

#include <array>
#include <iterator>
#include <memory>

// The INI file of a model: the first byte chooses the model, the others are the file. The panel
// must come up with values in range, the file must hold them then, and a second start must find the
// same.

namespace {

struct Model
{
    const char* file;
    std::uint32_t productId;
    int controls;
    std::unique_ptr<Panel> (*make)();
};

template <typename Kind> std::unique_ptr<Panel> make()
{
    return std::make_unique<Kind>();
}

constexpr std::array models{Model{"ka1.ini", 1, PanelTable::models[0].keys(), make<ka1>},
                            Model{"ka2.ini", 2, PanelTable::models[1].keys(), make<ka2>},
                            Model{"ks.ini", 15, PanelTable::models[2].keys(), make<ks>}};

using Values = Oracle::IniFile;

Values valuesOf(const Panel& panel)
{
    Values values;
    const auto knobs = panel.findChildren<Knob*>();
    for (const Knob* knob : knobs) {
        const std::string name = knob->objectName().toStdString();
        Fuzzing::require(knob->value >= knob->minimum && knob->value <= knob->maximum,
                         name + " is in range");
        values[name] = std::to_string(knob->value);
    }
    const auto buttons = panel.findChildren<Button*>();
    for (const Button* button : buttons)
        values[button->objectName().toStdString()] = button->on ? "true" : "false";
    return values;
}

Values stored(const Model& model)
{
    QFile file(Program::folder() + u'/' + QLatin1String(model.file));
    Fuzzing::require(file.open(QIODevice::ReadOnly), "there is a file");
    return Oracle::parseIni(file.readAll().toStdString());
}

Values start(const Model& model)
{
    VirtualPlatform::reset();
    VirtualPlatform::interface().plug(model.productId, 0);
    const Values values = valuesOf(*model.make());
    Fuzzing::forgetFiles();
    Fuzzing::require(std::ssize(values) == model.controls, "every control is there");
    const Values file = stored(model);
    for (const auto& [key, value] : values) {
        const auto found = file.find(key);
        Fuzzing::require(found != file.end() && found->second == value, key + " is in the file");
    }
    return values;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    Fuzzing::begin(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const Model& model = models.at(data[0] % models.size());
    VirtualFiles::write(model.file, std::string(Fuzzing::text(data + 1, size - 1)));
    const Values first = start(model);
    Fuzzing::require(start(model) == first, "the second start finds what the first has left");
    return 0;
}
