#include "random/kept_cases.h"

#include "oracle/codes.h"
#include "oracle/text.h"
#include "random/scenes.h"

#include <functional>

using Oracle::Action;
using Oracle::parseSequence;
using namespace Scene;

namespace {

using Cases = std::vector<MatrixCase>;

void add(Cases& cases, const Model& model, const std::string& name,
         std::initializer_list<Actions> parts)
{
    MatrixCase made{std::string(model.name) + ' ' + name, {}};
    for (const Actions& part : parts)
        append(made.sequence, part);
    made.sequence.push_back({"quit", {}});
    cases.push_back(made);
}

Action fault(const char* kind, std::uint32_t code, const std::string& count, int skip, int value)
{
    return {kind,
            {"0x" + Oracle::Text::hex(code), count, std::to_string(skip), std::to_string(value)}};
}

Action fails(std::uint32_t code, const std::string& count)
{
    return fault("fail", code, count, 0, 31);
}

Action throws(std::uint32_t code, int skip)
{
    return fault("throw", code, "1", skip, 0);
}

template <typename Visitor> void eachControl(const Model& model, Visitor visit)
{
    for (const Control& control : model.controls) {
        if (!control.isReadOut())
            visit(control);
    }
}

/// The model's file as somebody else left it.
Action fileWith(const Model& model, const std::function<std::string(const Control&)>& value)
{
    std::string text;
    eachControl(model, [&](const Control& control) {
        const std::string key = control.key;
        const std::size_t slash = key.find('/');
        text += '[' + key.substr(0, slash) + "]\n" + key.substr(slash + 1) + '=' + value(control) +
                '\n';
    });
    return {"file", {std::string(model.name) + ".ini", text}};
}

/// By the command or by the mixer's table, whichever the control sends; then by an exception.
void addRefusedControls(Cases& cases, const Model& model)
{
    using namespace Oracle::Code;
    const Action heal{"heal", {}};
    Actions refused;
    eachControl(model, [&](const Control& control) {
        const Action hand = use(control);
        append(refused, {fails(command, "1"), fails(writeMixer, "1"), hand, heal, hand,
                         throws(command, 0), hand, heal});
    });
    add(cases, model, "refused controls", {begin(), plug(model), refused});
}

void addRefusedCodes(Cases& cases)
{
    std::size_t next = 0;
    for (const std::uint32_t code : Oracle::Code::all) {
        const Model& model = models[next++ % std::size(models)];
        add(cases, model, "refused " + Oracle::Text::hex(code),
            {begin(),
             plug(model),
             {fails(code, "always")},
             use(model),
             parseSequence("wait 1100\n"),
             lose(),
             plug(model),
             recover(model)});
    }
}

void addArrivals(Cases& cases, const Model& model)
{
    constexpr int commandsOfAnArrival = 14;
    for (int skip = 0; skip < commandsOfAnArrival; ++skip)
        add(cases, model, "exception at arrival",
            {begin(), {throws(Oracle::Code::command, skip)}, plug(model), usePanel(model)});
    add(cases, model, "exception for the version",
        {begin(), {throws(Oracle::Code::transfer, 0)}, plug(model)});
    for (const char* skip : {"0", "1", "2", "3"})
        add(cases, model, "refused opening",
            {begin(), {{"failopen", {"1", "5", skip}}}, plug(model), plug(model)});
    add(cases, model, "slow replay",
        {begin(), {fault("delay", Oracle::Code::writeMixer, "1", 0, 600)}, plug(model)});
}

/// All keys say something else than by default; then each button alone, as muting hides the rest.
void addStoredFiles(Cases& cases, const Model& model)
{
    const auto start = [&](const std::string& name, const auto& isOn) {
        int knobValue = 0;
        const Action file = fileWith(model, [&](const Control& control) {
            return control.isKnob() ? std::to_string(++knobValue)
                   : isOn(control)  ? "true"
                                    : "false";
        });
        add(cases, model, name,
            {{file},
             begin(),
             plug(model),
             usePanel(model),
             parseSequence("quit\nstart C\n"),
             plug(model)});
    };
    start("every key", [](const Control&) { return true; });
    eachControl(model, [&](const Control& button) {
        if (button.isButton())
            start(button.key, [&](const Control& other) { return &other == &button; });
    });
}

void addStoredTexts(Cases& cases)
{
    const std::string texts[] = {
        "3",
        "-7",
        "2147483647",
        "-2147483648",
        "2147483648",
        "-2147483649",
        "4294967296",
        "4294967297",
        "4294967302",
        "4294967338",
        "-4294967290",
        "9223372036854775807",
        "18446744073709551622",
        std::string(1000, '9'),
        "\" 5\"",
        "\"5 \"",
        "5.0",
        "1e3",
        "0x10",
        "12abc",
        "3dB",
        "1 dB",
        "",
        "\"\"",
        "true",
        "TRUE",
        "truer",
        "true, true",
        "false",
        "0",
        "1",
        "-1",
        "on",
        "yes",
        "1, 2",
        "5,",
        "tr\\x1e",
        "@Invalid()",
        "@ByteArray(5)",
        "@Variant(\\0\\0\\0\\x1\\x1)",                     // a boolean
        "@Variant(\\0\\0\\0\\x2\\0\\0\\0\\x5)",            // an integer
        "@Variant(\\0\\0\\0\\x6@\\x14\\0\\0\\0\\0\\0\\0)", // a double
    };
    std::size_t next = 0;
    for (const std::string& text : texts) {
        const Model& model = models[next++ % std::size(models)];
        add(cases, model, "text " + text.substr(0, 40),
            {{fileWith(model, [&](const Control&) { return text; })}, begin(), plug(model)});
    }
}

/// One after another; the next begins as soon as the last is over. The last one lasts beyond the
/// program's end.
void addFileTroubles(Cases& cases, const Model& model)
{
    const std::string file = std::string(model.name) + ".ini";
    const Actions hands{use(model.controls[0]), use(model.controls[1])};
    const Actions over = parseSequence("mend\nwait 1000\n");
    Actions troubles;
    const auto meet = [&](const Action& trouble) {
        troubles.push_back(trouble);
        append(troubles, hands);
        troubles.push_back({"wait", {"1200"}});
    };
    for (const char* kind : {"unreadable", "readonly", "keptopen", "folder"}) {
        meet({"trouble", {file, kind}});
        append(troubles, over);
    }
    meet({"trouble", {"folder", "unwritable"}});
    append(troubles, over);
    meet({"trouble", {"folder", "full"}});
    add(cases, model, "troubles of the file",
        {begin(), plug(model), troubles, parseSequence("quit\nstart C\nwait 1200\n"), over});
}

/// As an editor of Windows saves it.
void addMarkedFile(Cases& cases, const Model& model)
{
    Action file = fileWith(model, [](const Control& control) {
        return control.isKnob() ? std::string("3") : std::string("true");
    });
    file.arguments.back().insert(0, "\xEF\xBB\xBF");
    add(cases, model, "byte order mark",
        {{file}, begin(), plug(model), usePanel(model), lose(), plug(model)});
}

/// Full scale, its mean, silence, a mean that is truncated toward zero and sums that wrap.
void addLevels(Cases& cases, const Model& model)
{
    add(cases, model, "levels",
        {begin(), plug(model),
         parseSequence("levels 2147483647 1073741824 536870912 0\nwait 500\n"
                       "levels -2147483647 0 1073741824 536870912\nwait 500\n"
                       "levels 1 0 5000 -5000\nwait 500\n"
                       "levels 0 0 -1 0\nwait 500\n"
                       "levels -2147483648 0 2147483647 2147483647\nwait 500\n"
                       "levels 1073741824 0 1073741824 1073741824\nwait 500\n")});
}

/// Titles show what an interface says for its version: nothing, a zero within, a byte beyond ASCII.
void addVersions(Cases& cases, const Model& model)
{
    Actions starts;
    for (const std::string& version :
         {std::string(), std::string("1\0002", 3), std::string("\xE9\xFF")}) {
        starts.push_back({"firmware", {version}});
        append(starts, plug(model));
        append(starts, lose());
    }
    add(cases, model, "versions", {begin(), starts});
}

/// The editor goes with its panel, and nothing may come of what was typed.
void addOpenEditors(Cases& cases, const Model& model)
{
    eachControl(model, [&](const Control& knob) {
        if (!knob.isKnob())
            return;
        const Actions editing{{"doubleclick", {knob.key, "text"}}, {"type", {"5"}}};
        const std::string name = std::string("editor of ") + knob.key;
        add(cases, model, name, {begin(), plug(model), editing, lose(), plug(model)});
        add(cases, model, name + " at the end", {begin(), plug(model), editing});
    });
}

} // namespace

std::vector<MatrixCase> keptCases()
{
    Cases cases;
    for (const Model& model : models) {
        addRefusedControls(cases, model);
        addArrivals(cases, model);
        addStoredFiles(cases, model);
        addMarkedFile(cases, model);
        addFileTroubles(cases, model);
        addLevels(cases, model);
        addVersions(cases, model);
        addOpenEditors(cases, model);
    }
    addRefusedCodes(cases);
    addStoredTexts(cases);
    return cases;
}
