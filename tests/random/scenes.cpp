#include "random/scenes.h"

using Oracle::parseSequence;

namespace {

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

constexpr Scene::Model allModels[] = {
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

} // namespace

namespace Scene {

std::span<const Model> models()
{
    return allModels;
}

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

Actions usePanel(const Model& model)
{
    return parseSequence(model.use);
}

Actions useDialog()
{
    return parseSequence(dialogUse);
}

Actions use(const Model& model)
{
    Actions sequence = usePanel(model);
    append(sequence, useDialog());
    return sequence;
}

Actions begin()
{
    return parseSequence("start en_US\ntray main\n");
}

Actions recover(const Model& model)
{
    Actions sequence = {{"heal", {}}};
    append(sequence, lose());
    append(sequence, plug(model));
    append(sequence, use(model));
    sequence.push_back({"quit", {}});
    return sequence;
}

} // namespace Scene
