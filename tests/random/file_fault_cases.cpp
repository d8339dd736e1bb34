#include "random/file_fault_cases.h"

#include "random/scenes.h"

#include <initializer_list>

using Oracle::Action;
using Oracle::parseSequence;
using namespace Scene;

namespace {

using Texts = std::initializer_list<const char*>;

/// What can befall the files of a model: the whole folder, the model's file, the dialog's.
std::vector<Action> troubles(const std::string& model)
{
    std::vector<Action> list;
    for (const char* kind : {"unwritable", "full"})
        list.push_back({"trouble", {"folder", kind}});
    for (const std::string& file : {model + ".ini", std::string("setting.ini")}) {
        for (const char* kind : {"readonly", "keptopen", "folder", "unreadable"})
            list.push_back({"trouble", {file, kind}});
    }
    return list;
}

/// Files of an earlier day, with a key of another program.
Actions earlierFiles(const std::string& model)
{
    return {{"file",
             {model + ".ini",
              "[Other]\nColour=blue\n[Dial]\nMicValue=7\nMic1Value=7\nHeadphoneValue=-20\n"
              "[Button]\nMonitorMicIsChecked=true\n"}},
            {"file", {"setting.ini", "[Audio]\nBufferSize=512\n[USB]\nLatencySize=32\n"}}};
}

/// The trouble is over, and some time goes by. What waits is saved without anybody's doing, and the
/// next start finds it.
Actions recover()
{
    return parseSequence("mend\nwait 1000\nquit\nstart en_US\nwait 1700\nquit\n");
}

Actions joined(std::initializer_list<Actions> parts)
{
    Actions sequence;
    for (const Actions& part : parts)
        append(sequence, part);
    return sequence;
}

/// Collects the cases of one trouble.
class Cases
{
public:
    Cases(const Model& ofModel, Action ofTrouble, std::vector<MatrixCase>& addTo)
        : model(ofModel)
        , trouble(std::move(ofTrouble))
        , list(addTo)
    {
    }

    void add()
    {
        const Actions wait = parseSequence("wait 1100\n");
        const Actions restart = parseSequence("quit\nmend\nstart en_US\nwait 1700\n");
        for (const auto& [after, lasts] : times({"0", "4", "9", "16", "26"}, {"0", "1", "4"})) {
            const Actions fault = faultAt(after, lasts);
            add("arrival", fault, {begin(), fault, plug(model), wait});
            add("arrival with files", fault,
                {earlierFiles(model.name), begin(), fault, plug(model), wait});
        }
        for (const auto& [after, lasts] : times({"0", "2", "5", "9", "14"}, {"0", "1", "4", "12"}))
            addInUse("use", usePanel(model), faultAt(after, lasts));
        for (const auto& [after, lasts] : times({"0", "2", "4", "8", "12"}, {"0", "1", "4"}))
            addInUse("dialog", useDialog(), faultAt(after, lasts));
        for (const auto& [after, lasts] : times({"0", "3", "8"}, {"0"})) {
            const Actions fault = faultAt(after, lasts);
            const Actions life = joined({begin(), plug(model), fault, use()});
            add("removal", fault, {life, lose(), parseSequence("mend\nwait 1000\n"), plug(model)});
            add("removal and return", fault, {life, lose(), plug(model), wait});
            add("quit", fault, {life, restart});
            add("quit at once", fault, {life, parseSequence("mend\n"), restart});
        }
    }

    /// Another model comes while the files are in trouble.
    void addSuccession(const Model& next)
    {
        for (const auto& [after, lasts] : times({"0", "3", "8", "20"}, {"0", "12"})) {
            const Actions fault = faultAt(after, lasts);
            add("succession", fault,
                {begin(), plug(model), fault, use(), lose(), plug(next), usePanel(next)});
        }
    }

private:
    using Time = std::pair<const char*, const char*>;

    static std::vector<Time> times(Texts afters, Texts lastings)
    {
        std::vector<Time> list;
        for (const char* after : afters) {
            for (const char* lasts : lastings)
                list.emplace_back(after, lasts);
        }
        return list;
    }

    Actions faultAt(const char* after, const char* lasts) const
    {
        Action fault = trouble;
        fault.arguments.insert(fault.arguments.end(), {after, lasts});
        return {fault};
    }

    Actions use() const { return joined({usePanel(model), useDialog()}); }

    void addInUse(const char* moment, const Actions& hands, const Actions& fault)
    {
        add(moment, fault, {begin(), plug(model), fault, hands, parseSequence("wait 1100\n")});
    }

    void add(const char* moment, const Actions& fault, std::initializer_list<Actions> parts)
    {
        list.push_back({std::string(model.name) + ' ' + moment + ' ' + toText(fault.front()),
                        joined({joined(parts), recover()})});
    }

    const Model& model;
    const Action trouble;
    std::vector<MatrixCase>& list;
};

} // namespace

std::vector<MatrixCase> fileFaultCases()
{
    std::vector<MatrixCase> list;
    for (std::size_t i = 0; i < std::size(models); ++i) {
        const Model& model = models[i];
        const Model& next = models[(i + 1) % std::size(models)];
        for (const Action& trouble : troubles(model.name)) {
            Cases cases(model, trouble, list);
            cases.add();
            cases.addSuccession(next);
        }
        for (const char* kind : {"readonly", "keptopen", "folder", "unreadable"})
            Cases(model, {"trouble", {std::string(next.name) + ".ini", kind}}, list)
                .addSuccession(next);
    }
    return list;
}
