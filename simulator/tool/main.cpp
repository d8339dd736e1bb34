#include "simulator/tool/commands.h"

#include <cstdio>

namespace {

void printHelp()
{
    std::puts("Usage: quorvel-simctl COMMAND [WORDS]\n\n"
              "Steers the simulated interface.\n");
    for (const ToolCommand& command : toolCommands())
        std::printf("  %-14s %-24s %s\n", command.name, command.words, command.summary);
    std::puts("\nCODE is a control code in hexadecimal or 'any'; COUNT is a number or 'forever',\n"
              "and 0 takes the faults of that code back.\n"
              "Exit code: 0 done, 1 refused, unanswered or no simulator, 2 not understood.");
}

int exitCode(ToolResult result)
{
    switch (result) {
    case ToolResult::done:
        return 0;
    case ToolResult::misused:
        return 2;
    default:
        return 1;
    }
}

ToolResult resultOf(const ToolCommand& command, SimulatorControl& control,
                    const std::vector<std::string>& words)
{
    try {
        return command.run(control, words);
    } catch (const SimulatorReadError&) {
        return ToolResult::refused;
    }
}

int runCommand(const ToolCommand& command, const std::vector<std::string>& words)
{
    SimulatorControl control;
    if (!control.open()) {
        std::fprintf(stderr, "quorvel-simctl: no simulator is running (error %u)\n",
                     static_cast<unsigned>(control.lastError()));
        return exitCode(ToolResult::refused);
    }
    const ToolResult result = resultOf(command, control, words);
    if (result == ToolResult::misused)
        std::fprintf(stderr, "quorvel-simctl: usage: %s %s\n", command.name, command.words);
    if (result == ToolResult::refused)
        std::fprintf(stderr, "quorvel-simctl: the simulator refused '%s' (error %u)\n",
                     command.name, static_cast<unsigned>(control.lastError()));
    if (result == ToolResult::unwritten)
        std::fprintf(stderr, "quorvel-simctl: the answer to '%s' cannot be written\n",
                     command.name);
    return exitCode(result);
}

} // namespace

int main(int argc, char** argv)
{
    const std::string name = argc > 1 ? argv[1] : "";
    if (name == "--help") {
        printHelp();
        return 0;
    }
    const ToolCommand* const command = findCommand(name);
    if (command == nullptr) {
        std::fprintf(stderr, "quorvel-simctl: unknown command '%s'; try --help\n", name.c_str());
        return exitCode(ToolResult::misused);
    }
    const std::vector<std::string> words(argv + 2, argv + argc);
    if (words.size() < command->leastWords || words.size() > command->mostWords) {
        std::fprintf(stderr, "quorvel-simctl: usage: %s %s\n", command->name, command->words);
        return exitCode(ToolResult::misused);
    }
    return runCommand(*command, words);
}
