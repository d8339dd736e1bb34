#include "random/scenes.h"

#include <string>

using Oracle::Action;
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

} // namespace

namespace Scene {

void append(Actions& sequence, const Actions& more)
{
    sequence.insert(sequence.end(), more.begin(), more.end());
}

Actions plug(const Model& model)
{
    return {{"plug", {std::to_string(model.productId), "0"}}, {"wait", {"1700"}}};
}

Actions lose()
{
    return {{"unplug", {}}, {"wait", {"1700"}}};
}

Action use(const Control& control)
{
    return control.isKnob() ? Action{"wheel", {control.key, "up", "rim"}}
                            : Action{"click", {control.key}};
}

Actions usePanel(const Model& model)
{
    Actions sequence;
    for (const Control& control : model.controls) {
        if (!control.isReadOut())
            sequence.push_back(use(control));
    }
    return sequence;
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
