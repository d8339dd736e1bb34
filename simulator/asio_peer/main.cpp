#include "simulator/asio_peer/peer_commands.h"

#include <cstdio>

namespace {

void printHelp()
{
    std::puts("Usage: quorvel-asio-peer COMMAND [WORDS]\n\n"
              "Plays the ASIO driver beside a running panel.\n");
    for (const PeerCommand& command : peerCommands())
        std::printf("  %-14s %-10s %s\n", command.name, command.words, command.summary);
    std::puts("\nA panel that serves another client is asked again for up to five seconds.\n"
              "wait-reset prints 'waiting' when its pipe is there and 'received' with the bytes;\n"
              "connect prints 'connected', hold-busy 'busy', hold-unread 'holding'.\n"
              "Exit code: 0 done, 1 failed or too late, 2 not understood.");
}

PeerResult runCommand(const PeerCommand& command, const std::vector<std::string>& words)
{
    const bool fits = words.size() >= command.leastWords && words.size() <= command.mostWords;
    const PeerResult result = fits ? command.run(words) : PeerResult::misused;
    if (result == PeerResult::misused)
        std::fprintf(stderr, "quorvel-asio-peer: usage: %s %s\n", command.name, command.words);
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string name = argc > 1 ? argv[1] : "";
    if (name == "--help") {
        printHelp();
        return 0;
    }
    const PeerCommand* const command = findPeerCommand(name);
    if (command == nullptr) {
        std::fprintf(stderr, "quorvel-asio-peer: unknown command '%s'; try --help\n", name.c_str());
        return static_cast<int>(PeerResult::misused);
    }
    return static_cast<int>(runCommand(*command, {argv + 2, argv + argc}));
}
