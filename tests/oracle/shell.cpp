#include "oracle/shell.h"

#include "oracle/driver.h"
#include "oracle/files.h"
#include "oracle/input.h"
#include "oracle/main_window.h"
#include "oracle/panel.h"
#include "oracle/pipe.h"
#include "oracle/settings.h"
#include "oracle/text.h"

namespace Oracle::Shell {

namespace {

/// The translation of that locale; there is no file of any in the folder "/nowhere".
void translate(World& world, const std::string& locale)
{
    const bool chinese = locale == "zh_CN" || locale == "zh_TW";
    const std::string path =
        std::string("/nowhere/QuorvelDriver_") + (chinese ? "zh_CN" : "en_US") + ".qm";
    world.debug(Text::lineQuoted("系统返回的语言代码：", locale));
    world.debug(Text::lineQuoted("拼接后的路径：", path));
    world.warning("未找到任何翻译文件，使用原始文本");
}

/// start LOCALE
void start(World& world, const std::string& locale)
{
    if (world.running)
        return;
    world.running = true;
    translate(world, locale);
    Settings::create(world);
    world.debug("Pipe created successfully.");
    world.debug("ThreadSettingsPip initialized.");
    world.threadLines.emplace_back("ThreadSettingsPip is running waiting Asio Info...");
    MainWindow::create(world);
}

void quit(World& world)
{
    world.events.emplace_back("ended with 0");
    Files::saveAll(world);
    Input::leaveEditor(world);
    world.debug("Settings dialog closed and resources cleaned up.");
    world.debug("Pipe closed.");
    world.running = false;
    world.panel.reset();
    world.window = Window();
    world.dialog = Dialog();
    world.time.stopAll();
    world.kept.clear();
}

void startSecondCopy(World& world)
{
    world.debug("Quorvel Mixer 已经在运行中。");
    world.events.emplace_back("second copy ended");
}

void showMainWindow(World& world)
{
    // What had the focus before it was hidden has it no longer.
    if (!world.window.visible && world.panel)
        world.panel->focus.clear();
    world.window.visible = true;
}

void showSettings(World& world)
{
    Input::leaveEditor(world);
    world.dialog.visible = true;
}

void upgrade(World& world)
{
    Device device;
    if (Driver::open(world, device))
        Driver::upgradeFirmware(world, device);
    else
        world.debug("Failed to create device in ka1.");
}

void openSoundPanel(World& world, bool works)
{
    world.events.emplace_back("shell: open control.exe mmsys.cpl 1");
    if (works) {
        world.debug("声音设置面板已打开。");
        return;
    }
    Input::leaveEditor(world); // The box takes the focus.
    world.events.emplace_back("box: 错误: 无法打开声音设置面板，请检查系统设置。");
}

void restartExplorer(World& world, long long exitCode)
{
    if (exitCode == 0) {
        world.debug("资源管理器已成功重启");
        return;
    }
    world.warning(Text::line("命令执行失败，退出代码:", exitCode));
    world.warning(Text::lineQuoted("输出:", "out"));
    world.warning(Text::lineQuoted("错误输出:", "err"));
}

/// tray ENTRY [ARGUMENT]
void tray(World& world, const Action& action)
{
    const std::string& entry = action.at(0);
    if (entry == "main" || entry == "trigger" || entry == "doubleclick")
        showMainWindow(world);
    else if (entry == "setup")
        showSettings(world);
    else if (entry == "upgrade")
        upgrade(world);
    else if (entry == "sound")
        openSoundPanel(world, action.at(1) != "fails");
    else if (entry == "explorer")
        restartExplorer(world, action.number(1));
    // The other clicks do nothing.
}

/// combo INDEX up|down|first|last
void turnCombo(World& world, const Action& action)
{
    Dialog& dialog = world.dialog;
    if (!dialog.visible || dialog.minimised)
        return;
    const auto choice = static_cast<Choice>(action.number(0));
    const Combo& combo = dialog.combos.at(static_cast<std::size_t>(choice));
    std::size_t index = combo.index;
    const std::size_t last = combo.items.size() - 1;
    if (action.at(1) == "up")
        index -= index > 0 ? 1 : 0;
    else if (action.at(1) == "down")
        index += index < last ? 1 : 0;
    else
        index = action.at(1) == "first" ? 0 : last;
    Input::leaveEditor(world);
    Settings::choose(world, choice, combo.items[index]);
}

/// dialog ok|close|minimise
void dialog(World& world, const std::string& what)
{
    Dialog& dialog = world.dialog;
    if (!dialog.visible || dialog.minimised)
        return;
    Input::leaveEditor(world);
    if (what == "ok")
        Pipe::sendReset(world);
    else if (what == "close")
        dialog.visible = false;
    else
        dialog.minimised = true;
}

void closeWindow(World& world)
{
    Input::leaveEditor(world);
    world.window.visible = false;
}

void setResetPipe(World& world, const std::string& state)
{
    world.resetPipe = state == "busy"      ? ResetPipe::busy
                      : state == "serves"  ? ResetPipe::serves
                      : state == "refuses" ? ResetPipe::refuses
                                           : ResetPipe::absent;
}

bool whileRunning(World& world, const Action& action)
{
    if (action.verb == "quit")
        quit(world);
    else if (action.verb == "secondcopy")
        startSecondCopy(world);
    else if (action.verb == "tray")
        tray(world, action);
    else if (action.verb == "combo")
        turnCombo(world, action);
    else if (action.verb == "dialog")
        dialog(world, action.at(0));
    else if (action.verb == "message")
        Pipe::receive(world, action.at(0));
    else if (action.verb == "nomessage")
        Pipe::receiveNothing(world);
    else if (action.verb == "closewindow")
        closeWindow(world);
    else
        return false;
    return true;
}

} // namespace

bool apply(World& world, const Action& action)
{
    if (action.verb == "start")
        start(world, action.at(0));
    else if (action.verb == "resetpipe")
        setResetPipe(world, action.at(0));
    else
        return world.running && whileRunning(world, action);
    return true;
}

} // namespace Oracle::Shell
