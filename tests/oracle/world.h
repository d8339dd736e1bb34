#pragma once

#include "oracle/interface.h"
#include "oracle/timeline.h"
#include "oracle/troubles.h"

#include <array>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Oracle {

struct WithoutCase
{
    bool operator()(const std::string& a, const std::string& b) const;
};

/// The keys of an INI file, "Group/Key", with their texts.
using IniFile = std::map<std::string, std::string, WithoutCase>;

/// The driver object of one user of the driver.
struct Device
{
    int handle = 0; ///< 0: not open
    std::uint32_t usbErrors = 0;

    bool isOpen() const { return handle != 0; }
};

struct Model;

struct Knob
{
    int minimum = 0;
    int maximum = 0;
    int value = 0;
    int offset = 0;
    int lastX = 0;
    int lastY = 0;

    std::string shown() const;
};

struct Button
{
    std::string caption;
    std::string accent;
    bool on = false;
};

/// The open editor of a knob.
struct Editor
{
    std::string key;
    std::string text;
    bool byKeyboard = false; ///< begun by Enter
    bool allSelected = true;
    bool modified = false;
};

/// Volume, mute and dim of one output.
struct Output
{
    bool muted = false;
    bool dimmed = false;
};

struct Panel
{
    const Model* model = nullptr;
    Device device;
    bool hasControls = false;
    std::map<std::string, Knob> knobs;
    std::map<std::string, Button> buttons;
    std::vector<std::string> order; ///< of Tab
    std::string focus;              ///< the control that has it; empty: the window
    std::map<std::string, Output> outputs;
    std::vector<double> mixer;
    std::array<std::int32_t, 4> levels{};
    std::vector<std::string> readOuts;
    std::optional<Editor> editor;
};

struct Combo
{
    std::vector<std::string> items;
    std::size_t index = 0;

    const std::string& text() const { return items[index]; }
};

enum Choice { bufferSize, latency, sampleRate, slowMode, choices };

struct Dialog
{
    std::array<Combo, choices> combos;
    std::optional<Device> device;
    bool visible = false;
    bool onTop = false;
    bool minimised = false;
    std::string usbLine; ///< empty: hidden
    std::uint32_t sampleRate = 0;
    bool served = false; ///< a device has been programmed and not been lost since
};

struct Window
{
    bool visible = false;
    std::string title = "Quorvel Driver";
    std::vector<std::string> labels; ///< below the panel, or alone
    std::uint32_t productId = 0;
    std::uint32_t errorCount = 0;
    std::optional<Device> meterDevice;
    std::deque<Device> kept; ///< of attempts that led to nothing; no longer used, but not closed
};

/// An INI file as the program keeps it.
struct KeptFile
{
    IniFile known;   ///< what it found in the file or wrote to it
    IniFile waiting; ///< not saved yet
    bool unread = true;
    IniFile assumed;      ///< what was restored while the file was unread
    std::string reported; ///< the line of the present trouble
};

enum class ResetPipe { absent, busy, serves, refuses };

/// The program and everything around it, and what it is expected to do next: `events` grows as the
/// oracle goes through the steps of the program.
struct World
{
    bool running = false;
    Interface interface;
    std::vector<double> sentMixer =
        std::vector<double>(8288); ///< the last one on the way to the driver
    ResetPipe resetPipe = ResetPipe::absent;
    Timeline time;
    Window window;
    std::unique_ptr<Panel> panel;
    Dialog dialog;
    std::map<std::string, IniFile> files; ///< by name; a file that does not exist has no entry
    std::map<std::string, KeptFile> kept; ///< those that the program has opened
    Troubles troubles;

    /// Requests, lines and waits of the GUI thread in order, since the last action.
    std::vector<std::string> events;
    /// The debug lines of the pipe thread since the last action.
    std::vector<std::string> threadLines;

    void debug(const std::string& line) { events.push_back("debug: " + line); }
    void warning(const std::string& line) { events.push_back("warning: " + line); }
    /// Waits in the GUI thread.
    void sleep(int milliseconds);
};

} // namespace Oracle
