#include "simulator/asio_peer/peer_commands.h"

#include "simulator/asio_peer/reset_server.h"
#include "simulator/asio_peer/settings_client.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <limits>
#include <optional>

namespace {

using Words = std::vector<std::string>;

constexpr std::uint32_t longestWait = 24 * 60 * 60; // seconds
constexpr std::uint32_t defaultWait = 30;           // seconds

/// The whole word as a number up to `most`.
std::optional<std::uint32_t> parseNumber(const std::string& word, int base, std::uint32_t most)
{
    std::uint32_t number = 0;
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, number, base);
    if (error != std::errc() || stop != end || number > most)
        return std::nullopt;
    return number;
}

/// Appends a word of hexadecimal bytes such as "31" or "0000a0ff".
bool appendBytes(std::vector<char>& message, const std::string& word)
{
    if (word.size() % 2 != 0)
        return false;
    for (std::size_t i = 0; i < word.size(); i += 2) {
        const auto byte = parseNumber(word.substr(i, 2), 16, 0xFF);
        if (!byte)
            return false;
        message.push_back(static_cast<char>(*byte));
    }
    return true;
}

PeerResult fail(const char* what, DWORD error)
{
    std::fprintf(stderr, "quorvel-asio-peer: %s (error %u)\n", what, static_cast<unsigned>(error));
    return PeerResult::failed;
}

void tell(const char* line)
{
    std::puts(line);
    std::fflush(stdout); // Whoever waits for the line reads a pipe.
}

PeerResult failToConnect(DWORD error)
{
    return fail(error == ERROR_PIPE_BUSY ? "the panel's pipe stays busy"
                                         : "the panel's pipe is absent; is the panel running?",
                error);
}

PeerResult sendMessage(const std::vector<char>& message)
{
    SettingsClient client;
    DWORD error = client.connect();
    if (error != ERROR_SUCCESS)
        return failToConnect(error);
    error = client.send(message);
    return error == ERROR_SUCCESS ? PeerResult::done
                                  : fail("the panel did not take the message", error);
}

PeerResult openSettings(const Words&)
{
    constexpr std::size_t openField = 16; // Of five little-endian 32-bit fields the last.
    std::vector<char> message(20, '\0');
    message[openField] = 1;
    return sendMessage(message);
}

PeerResult send(const Words& words)
{
    std::vector<char> message;
    const bool readable = std::all_of(words.begin(), words.end(), [&](const std::string& word) {
        return appendBytes(message, word);
    });
    return readable ? sendMessage(message) : PeerResult::misused;
}

PeerResult connectSilently(const Words& words)
{
    const auto time = parseNumber(words[0], 10, longestWait * 1000);
    if (!time)
        return PeerResult::misused;
    SettingsClient client;
    const DWORD error = client.connect();
    if (error != ERROR_SUCCESS)
        return failToConnect(error);
    tell("connected");
    Sleep(*time);
    return PeerResult::done;
}

PeerResult waitReset(const Words& words)
{
    const auto time = words.empty() ? defaultWait : parseNumber(words[0], 10, longestWait);
    if (!time)
        return PeerResult::misused;
    ResetServer server;
    DWORD error = server.open();
    if (error != ERROR_SUCCESS)
        return fail("cannot create the reset pipe", error);
    tell("waiting");
    std::vector<unsigned char> message;
    error = server.receive(std::chrono::seconds(*time), message);
    if (error == ERROR_OPERATION_ABORTED)
        return fail("no reset request came in time", error);
    if (error != ERROR_SUCCESS)
        return fail("cannot read from the reset pipe", error);
    std::string line = "received";
    for (const unsigned char byte : message) {
        char text[8];
        std::snprintf(text, sizeof text, " 0x%02X", byte);
        line += text;
    }
    tell(line.c_str());
    return PeerResult::done;
}

PeerResult holdBusy(const Words& words)
{
    const auto time = parseNumber(words[0], 10, longestWait);
    if (!time)
        return PeerResult::misused;
    ResetServer server;
    DWORD error = server.open();
    if (error != ERROR_SUCCESS)
        return fail("cannot create the reset pipe", error);
    error = server.makeBusy();
    if (error != ERROR_SUCCESS)
        return fail("cannot occupy the reset pipe", error);
    tell("busy");
    Sleep(*time * 1000);
    return PeerResult::done;
}

PeerResult holdUnread(const Words& words)
{
    const auto time = parseNumber(words[0], 10, longestWait);
    if (!time)
        return PeerResult::misused;
    ResetServer server;
    const DWORD error = server.open(0);
    if (error != ERROR_SUCCESS)
        return fail("cannot create the reset pipe", error);
    tell("holding");
    Sleep(*time * 1000);
    return PeerResult::done;
}

} // namespace

const std::vector<PeerCommand>& peerCommands()
{
    static const std::vector<PeerCommand> commands = {
        {"open-settings", 0, 0, "", "ask the panel for its settings dialog", openSettings},
        {"send", 0, std::numeric_limits<std::size_t>::max(), "[HEX...]",
         "send these bytes to the panel as one message", send},
        {"connect", 1, 1, "MS", "connect to the panel, stay silent, close", connectSilently},
        {"wait-reset", 0, 1, "[SECONDS]", "wait for the panel's reset request, 30 s by default",
         waitReset},
        {"hold-busy", 1, 1, "SECONDS", "keep the reset pipe busy", holdBusy},
        {"hold-unread", 1, 1, "SECONDS", "let the reset request wait, unread", holdUnread},
    };
    return commands;
}

const PeerCommand* findPeerCommand(const std::string& name)
{
    const std::vector<PeerCommand>& commands = peerCommands();
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const PeerCommand& row) { return name == row.name; });
    return found == commands.end() ? nullptr : &*found;
}
