#pragma once

#include "oracle/driver.h"
#include "oracle/world.h"

namespace Oracle {

/// What a model is, and what is its own.
struct Model
{
    const char* name; ///< "ka1"
    std::uint32_t productId;
    void (*build)(World& world);
    void (*restore)(World& world); ///< the controls from the file, in the model's order
    void (*knob)(World& world, const std::string& key, int value);
    void (*button)(World& world, const std::string& key, bool on);
    void (*readOuts)(Panel& panel);

    std::string file() const { return std::string(name) + ".ini"; }
};

extern const Model ka1;
extern const Model ka2;
extern const Model ks;
inline constexpr const Model* models[] = {&ka1, &ka2, &ks};

/// Builds the model's panel: its device, its controls, the replay of its file.
void buildPanel(World& world, const Model& model);

/// What the panel does when a control announces its value.
void knobAnnounces(World& world, const std::string& key);
void buttonAnnounces(World& world, const std::string& key);

/// The restoring setters: take over and announce once.
void setKnob(World& world, const std::string& key, long long value);
void setButton(World& world, const std::string& key, bool on);

/// The read-out timer's turn.
void updateReadOuts(World& world);

/// What the models have in common. The numbers and texts are each model's own.
namespace PanelParts {

struct KnobTraits
{
    const char* key;
    int minimum;
    int maximum;
    int missing; ///< what it is restored to without a key
    int offset;
};

struct ButtonTraits
{
    const char* key;
    const char* caption;
    const char* accent;
};

/// A button that sends a command for an input.
struct SwitchTraits
{
    ButtonTraits button;
    Driver::Switch command;
    int channel;
    const char* clicked;
    const char* captionWhenOn = nullptr;
};

/// Opens the device and sets the output volumes. False when the panel stays empty.
bool openDevice(World& world, std::initializer_list<int> outputs);
/// Both in the order of Tab.
void addKnob(Panel& panel, const KnobTraits& traits);
void addButton(Panel& panel, const ButtonTraits& traits);
void unityOutputs(Panel& panel);
void startReadOuts(World& world, std::size_t labels);
void restoreKnob(World& world, const KnobTraits& traits);
void restoreButton(World& world, const char* key);
void storeKnob(World& world, const char* key);
void storeButton(World& world, const char* key);
void setCells(Panel& panel, std::initializer_list<std::size_t> cells, double gain);
bool sendMixer(World& world);
/// The state goes into the first line or is not told.
void sendSwitch(World& world, const SwitchTraits& traits, bool on, bool tellsState);
void sendMicVolume(World& world, const KnobTraits& traits, int channel, int value);
/// The level of an output that is muted, dimmed or neither.
int level(const Output& output, int value);
std::int32_t phoneSample(const Panel& panel);

} // namespace PanelParts

} // namespace Oracle
