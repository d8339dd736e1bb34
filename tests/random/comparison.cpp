#include "random/comparison.h"

#include "oracle/oracle.h"
#include "random/program.h"
#include "random/record.h"
#include "random/virtual_files.h"
#include "random/virtual_platform.h"

#include <QDir>

#include <algorithm>

using Oracle::Action;

namespace {

using Lines = std::vector<std::string>;

/// Empty when the two are the same; else what is expected and what is there from the first line on
/// in which they differ.
std::string difference(const char* what, const Lines& expected, const Lines& actual)
{
    const auto [left, right] = std::ranges::mismatch(expected, actual);
    if (left == expected.end() && right == actual.end())
        return {};
    constexpr std::ptrdiff_t most = 6;
    std::string text = std::string("  ") + what + ", after " +
                       std::to_string(left - expected.begin()) + " that agree\n";
    for (auto line = left; line != expected.end() && line - left < most; ++line)
        text += "    expected " + *line + '\n';
    for (auto line = right; line != actual.end() && line - right < most; ++line)
        text += "    actual   " + *line + '\n';
    return text;
}

/// What the program did, without the place of its files.
Lines actualEvents()
{
    Lines events = Record::takeEvents();
    const std::string folder = Program::folder().toStdString();
    for (std::string& event : events) {
        if (const std::size_t at = event.find(folder); at != std::string::npos)
            event.replace(at, folder.size(), "FOLDER");
    }
    return events;
}

Lines actualHandles()
{
    Lines handles;
    for (const int handle : VirtualPlatform::openHandles())
        handles.push_back(std::to_string(handle));
    return handles;
}

std::string differences(const Oracle::World& world, const Program& program)
{
    return difference("events", world.events, actualEvents()) +
           difference("lines of the thread", world.threadLines, Record::takeThreadLines()) +
           difference("open handles", Oracle::handles(world), actualHandles()) +
           difference("screen", Oracle::screen(world), program.screen()) +
           difference("files", Oracle::storage(world), Program::storage());
}

} // namespace

std::optional<Difference> compare(const std::vector<Action>& sequence, Coverage& coverage)
{
    VirtualPlatform::reset();
    VirtualFiles::reset(Program::folder().toStdString());
    QDir(Program::folder()).removeRecursively();
    Oracle::World world;
    Program program;
    Record::takeEvents();
    Record::takeThreadLines();
    ++coverage.sequences;
    for (std::size_t i = 0; i < sequence.size(); ++i) {
        ++coverage.actions;
        if (world.running) {
            coverage.recovered = world.panel && world.panel->hasControls &&
                                 !world.time.isActive(Oracle::Timer::detection);
            coverage.saved = coverage.recovered && Oracle::filesEqualControls(world);
        }
        coverage.pairs.insert(Oracle::situation(world) + " / " + sequence[i].verb);
        Oracle::step(world, sequence[i]);
        program.perform(sequence[i]);
        coverage.refusedCodes.insert(world.interface.refusedCodes().begin(),
                                     world.interface.refusedCodes().end());
        const std::string report = differences(world, program);
        if (!report.empty())
            return Difference{i, "  action " + toText(sequence[i]) + '\n' + report};
    }
    return std::nullopt;
}

std::vector<Action> shortened(std::vector<Action> sequence)
{
    Coverage ignored;
    const auto parts = [&](const std::vector<Action>& candidate) {
        const auto difference = compare(candidate, ignored);
        return difference ? difference->action + 1 : 0;
    };
    sequence.resize(parts(sequence));
    for (std::size_t length = sequence.size() / 2; length > 0;) {
        bool shorter = false;
        for (std::size_t first = 0; first + length <= sequence.size();) {
            std::vector<Action> candidate = sequence;
            const auto begin = candidate.begin() + static_cast<std::ptrdiff_t>(first);
            candidate.erase(begin, begin + static_cast<std::ptrdiff_t>(length));
            const std::size_t needed = parts(candidate);
            if (needed == 0) {
                first += length;
                continue;
            }
            candidate.resize(needed);
            sequence = candidate;
            shorter = true;
        }
        if (!shorter || length > 1)
            length /= 2;
    }
    return sequence;
}
