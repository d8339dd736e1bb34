#pragma once

#include "oracle/world.h"

namespace Oracle {

/// Builds the model's panel: its device, its controls, the replay of its file.
void buildPanel(World& world, Model model);

/// What the panel does when a control announces its value.
void knobAnnounces(World& world, const std::string& key);
void buttonAnnounces(World& world, const std::string& key);

/// The restoring setters: take over and announce once.
void setKnob(World& world, const std::string& key, long long value);
void setButton(World& world, const std::string& key, bool on);

/// Brings the controls to what their file says, in the model's order.
void restorePanel(World& world);

/// The read-out timer's turn.
void updateReadOuts(World& world);

std::string fileOf(Model model); ///< "ka1.ini"
std::string nameOf(Model model); ///< "ka1"

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
/// The level of an output that is muted, dimmed or neither.
int level(const Output& output, int value);
std::int32_t phoneSample(const Panel& panel);

} // namespace PanelParts

namespace Ka1 {
void build(World& world);
void restore(World& world);
void knob(World& world, const std::string& key, int value);
void button(World& world, const std::string& key, bool on);
void readOuts(Panel& panel);
} // namespace Ka1

namespace Ka2 {
void build(World& world);
void restore(World& world);
void knob(World& world, const std::string& key, int value);
void button(World& world, const std::string& key, bool on);
void readOuts(Panel& panel);
} // namespace Ka2

namespace Ks {
void build(World& world);
void restore(World& world);
void knob(World& world, const std::string& key, int value);
void button(World& world, const std::string& key, bool on);
void readOuts(Panel& panel);
} // namespace Ks

} // namespace Oracle
