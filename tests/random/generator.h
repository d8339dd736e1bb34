#pragma once

#include "oracle/action.h"
#include "oracle/world.h"

#include <cstdint>
#include <random>

/// Makes up what happens next. The same seed gives the same actions on every system.
class Generator
{
public:
    explicit Generator(std::uint64_t seed)
        : random(seed)
    {
    }

    /// An action that means something in this world, most of the time.
    Oracle::Action next(const Oracle::World& world);

private:
    Oracle::Action onPanel(const Oracle::Panel& panel);
    Oracle::Action onKnob(const std::string& key);
    Oracle::Action inEditor();
    Oracle::Action onDialog();
    Oracle::Action onShell();
    Oracle::Action onCable();
    Oracle::Action cable();
    Oracle::Action fault();
    Oracle::Action reading();
    Oracle::Action onFile();
    Oracle::Action trouble();
    Oracle::Action onPipe();
    Oracle::Action wait();

    int below(int bound);
    bool chance(int percent) { return below(100) < percent; }
    std::string oneOf(std::initializer_list<const char*> choices);
    template <typename Map> std::string anyKey(const Map& map);
    std::string position();
    std::string anyValue();
    std::string anyFile();
    std::string anyIni(const std::string& name);
    std::string anyCode();
    std::string bytes(int count);

    std::mt19937_64 random;
};

/// A whole sequence from the program's start on, of this many actions.
std::vector<Oracle::Action> makeSequence(std::uint64_t seed, int length);
