#include "random/fault_cases.h"

#include "oracle/codes.h"
#include "oracle/text.h"
#include "random/scenes.h"

#include <initializer_list>

using Oracle::Action;
using Oracle::parseSequence;

using Scene::Actions;
using Scene::append;
using Scene::Model;

namespace {

Actions duringArrival(const Model& model, const Action& fault)
{
    Actions sequence = Scene::begin();
    sequence.push_back(fault);
    append(sequence, Scene::plug(model));
    append(sequence, parseSequence("wait 1500\n"));
    append(sequence, Scene::recover(model));
    return sequence;
}

Actions duringUse(const Model& model, const Action& fault)
{
    Actions sequence = Scene::begin();
    append(sequence, Scene::plug(model));
    sequence.push_back(fault);
    append(sequence, Scene::use(model));
    append(sequence, parseSequence("wait 1100\n"));
    append(sequence, Scene::recover(model));
    return sequence;
}

Actions duringRemoval(const Model& model, const Action& fault)
{
    Actions sequence = Scene::begin();
    append(sequence, Scene::plug(model));
    sequence.push_back(fault);
    append(sequence, Scene::lose());
    append(sequence, Scene::plug(model));
    append(sequence, Scene::recover(model));
    return sequence;
}

/// Everything that can befall a control code, and opening.
std::vector<Action> faults()
{
    std::vector<Action> list;
    constexpr const char* kinds[][2] = {
        {"fail", "31"}, {"delay", "700"}, {"delay", "2500"}, {"short", "0"}, {"short", "2"}};
    for (const std::uint32_t code : Oracle::Code::all) {
        for (const auto& [kind, value] : kinds) {
            for (const char* skip : {"0", "1", "2", "3", "5"})
                list.push_back({kind, {"0x" + Oracle::Text::hex(code), "1", skip, value}});
            list.push_back({kind, {"0x" + Oracle::Text::hex(code), "always", "0", value}});
        }
    }
    for (const char* skip : {"0", "1", "2", "3", "4", "5"}) {
        for (const char* count : {"1", "2", "always"})
            list.push_back({"failopen", {count, "5", skip}});
    }
    return list;
}

} // namespace

std::vector<MatrixCase> faultCases()
{
    using Make = Actions (*)(const Model&, const Action&);
    constexpr std::pair<const char*, Make> moments[] = {
        {"arrival", duringArrival}, {"use", duringUse}, {"removal", duringRemoval}};
    std::vector<MatrixCase> cases;
    for (const Model& model : Scene::models) {
        for (const auto& [moment, make] : moments) {
            for (const Action& fault : faults()) {
                cases.push_back({std::string(model.name) + ' ' + moment + ' ' + toText(fault),
                                 make(model, fault)});
            }
        }
    }
    return cases;
}
