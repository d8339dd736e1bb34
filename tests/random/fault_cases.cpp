#include "random/fault_cases.h"

#include "oracle/codes.h"
#include "oracle/text.h"

#include <initializer_list>

using Oracle::Action;
using Oracle::parseSequence;

namespace {

using Actions = std::vector<Action>;

struct Model
{
    const char* name;
    const char* use; ///< a hand on every control
    const char* productId;
};

constexpr const char* dialogUse = "tray setup\n"
                                  "combo 0 down\n"
                                  "combo 1 down\n"
                                  "combo 2 last\n"
                                  "wait 450\n"
                                  "combo 3 last\n"
                                  "combo 0 first\n"
                                  "combo 2 first\n"
                                  "combo 3 first\n"
                                  "dialog ok\n"
                                  "wait 450\n";

constexpr Model models[] = {
    {"ka1",
     "wheel Dial/MicValue up\n"
     "wheel Dial/HeadphoneValue up\n"
     "wheel Dial/OtgToHpValue down\n"
     "click Button/MicInstrIsChecked\n"
     "click Button/Mic20dBIsChecked\n"
     "click Button/Mic48VIsChecked\n"
     "click Button/MonitorMicIsChecked\n"
     "click Button/HeadphoneMuteIsChecked\n"
     "click Button/HeadphoneDimIsChecked\n",
     "1"},
    {"ka2",
     "wheel Dial/Mic1Value up\n"
     "wheel Dial/Mic2Value up\n"
     "wheel Dial/SpeakerValue up\n"
     "wheel Dial/HeadphoneValue up\n"
     "wheel Dial/OtgToHpValue down\n"
     "wheel Dial/OtgToSPValue down\n"
     "click Button/Mic120dBIsChecked\n"
     "click Button/Mic148VIsChecked\n"
     "click Button/MonitorMic1IsChecked\n"
     "click Button/Mic220dBIsChecked\n"
     "click Button/Mic248VIsChecked\n"
     "click Button/MonitorMic2IsChecked\n"
     "click Button/SpeakerMuteIsChecked\n"
     "click Button/SpeakerDimIsChecked\n"
     "click Button/HeadphoneMuteIsChecked\n"
     "click Button/HeadphoneDimIsChecked\n",
     "2"},
    {"ks",
     "wheel Dial/MicValue up\n"
     "wheel Dial/HeadphoneValue up\n"
     "click Button/MonitorMicIsChecked\n"
     "click Button/HeadphoneMuteIsChecked\n"
     "click Button/HeadphoneDimIsChecked\n",
     "15"},
};

void append(Actions& sequence, const Actions& more)
{
    sequence.insert(sequence.end(), more.begin(), more.end());
}

Actions plug(const Model& model)
{
    return {{"plug", {model.productId, "0"}}, {"wait", {"1700"}}};
}

Actions lose()
{
    return {{"unplug", {}}, {"wait", {"1700"}}};
}

Actions use(const Model& model)
{
    Actions sequence = parseSequence(model.use);
    append(sequence, parseSequence(dialogUse));
    return sequence;
}

Actions begin()
{
    return parseSequence("start en_US\ntray main\n");
}

/// The fault is over: the interface goes and comes, and everything works.
Actions recover(const Model& model)
{
    Actions sequence = {{"heal", {}}};
    append(sequence, lose());
    append(sequence, plug(model));
    append(sequence, use(model));
    sequence.push_back({"quit", {}});
    return sequence;
}

Actions duringArrival(const Model& model, const Action& fault)
{
    Actions sequence = begin();
    sequence.push_back(fault);
    append(sequence, plug(model));
    append(sequence, parseSequence("wait 1500\n"));
    append(sequence, recover(model));
    return sequence;
}

Actions duringUse(const Model& model, const Action& fault)
{
    Actions sequence = begin();
    append(sequence, plug(model));
    sequence.push_back(fault);
    append(sequence, use(model));
    append(sequence, parseSequence("wait 1100\n"));
    append(sequence, recover(model));
    return sequence;
}

Actions duringRemoval(const Model& model, const Action& fault)
{
    Actions sequence = begin();
    append(sequence, plug(model));
    sequence.push_back(fault);
    append(sequence, lose());
    append(sequence, plug(model));
    append(sequence, recover(model));
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

std::vector<FaultCase> faultCases()
{
    using Make = Actions (*)(const Model&, const Action&);
    constexpr std::pair<const char*, Make> moments[] = {
        {"arrival", duringArrival}, {"use", duringUse}, {"removal", duringRemoval}};
    std::vector<FaultCase> cases;
    for (const Model& model : models) {
        for (const auto& [moment, make] : moments) {
            for (const Action& fault : faults()) {
                cases.push_back({std::string(model.name) + ' ' + moment + ' ' + toText(fault),
                                 make(model, fault)});
            }
        }
    }
    return cases;
}
