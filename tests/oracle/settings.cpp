#include "oracle/settings.h"

#include "oracle/codes.h"
#include "oracle/driver.h"
#include "oracle/files.h"
#include "oracle/ini_values.h"
#include "oracle/text.h"

#include <algorithm>

namespace Oracle::Settings {

namespace {

constexpr const char* keys[] = {"Audio/BufferSize", "USB/LatencySize", "Audio/SampleRate",
                                "USB/SlowMode"};
constexpr const char* missing[] = {"192", "8", "44100", "Disabled"};

/// Writes the failure line when the step failed.
bool succeeds(World& world, bool step, const char* failure)
{
    if (!step)
        world.debug(std::string(failure) + "失败，可能是驱动未正确加载或设备未连接。");
    return step;
}

const Device& device(const World& world)
{
    static const Device none;
    return world.dialog.device ? *world.dialog.device : none;
}

bool act(World& world, std::uint32_t code, const char* failure)
{
    return succeeds(world, Driver::act(world, device(world), code), failure);
}

bool set(World& world, std::uint32_t code, std::uint32_t value, const char* failure)
{
    return succeeds(world, Driver::set(world, device(world), code, value), failure);
}

bool stop(World& world)
{
    return act(world, Code::stopAudio, "停止音频");
}

bool restart(World& world)
{
    return act(world, Code::startAudio, "重新启动音频");
}

void save(World& world, Choice choice, const char* saved)
{
    const std::string& text = world.dialog.combos[choice].text();
    Files::store(world, fileName, keys[choice], text);
    world.debug(Text::lineQuoted(saved, text));
}

std::uint32_t numberOf(const Combo& combo)
{
    return static_cast<std::uint32_t>(std::stoul(combo.text()));
}

bool setRateAndChannels(World& world)
{
    return set(world, Code::setSampleRate, world.dialog.sampleRate, "设置音频采样率") &&
           set(world, Code::setWdmChannels, 4, "设置WDM通道数量");
}

void applySampleRate(World& world)
{
    if (!stop(world))
        return;
    world.sleep(100);
    const std::string rate = world.dialog.combos[sampleRate].text();
    world.dialog.sampleRate = numberOf(world.dialog.combos[sampleRate]);
    world.debug(Text::lineQuoted("设置音频采样率为：", rate));
    if (!setRateAndChannels(world))
        return;
    world.sleep(100);
    if (!act(world, Code::initAudio, "重新启动音频"))
        return;
    world.time.startOnce(Timer::otgOffThenOn, 200);
    save(world, sampleRate, "音频采样率设置已保存：");
}

void tellLatency(World& world, std::uint32_t frames)
{
    world.debug(Text::line("设置USB延迟大小为：", static_cast<long long>(frames)) + " Frame");
}

void applyLatency(World& world)
{
    const std::uint32_t frames = numberOf(world.dialog.combos[latency]);
    tellLatency(world, frames);
    std::uint32_t current = 0;
    Driver::read(world, device(world), Code::readLatency, current);
    world.debug(Text::line("当前USB延迟大小：", static_cast<long long>(current)));
    if (current == frames || !stop(world))
        return;
    if (!set(world, Code::setLatency, frames, "设置USB延迟大小") || !restart(world))
        return;
    save(world, latency, "USB延迟大小设置已保存：");
}

std::uint32_t requiredLatency(std::uint32_t samples)
{
    if (samples <= 64)
        return 8;
    if (samples <= 128)
        return 16;
    return samples <= 256 ? 24 : 32;
}

/// A buffer that gets along with less latency lowers it first.
bool lowerLatency(World& world, std::uint32_t samples)
{
    const std::uint32_t required = requiredLatency(samples);
    tellLatency(world, required);
    std::uint32_t current = 0;
    if (!succeeds(world, Driver::read(world, device(world), Code::readLatency, current),
                  "获取USB延迟大小"))
        return false;
    world.debug(Text::line("当前USB延迟大小：", static_cast<long long>(current)));
    if (required < current)
        choose(world, latency, std::to_string(required));
    return true;
}

void applyBufferSize(World& world)
{
    const std::uint32_t samples = numberOf(world.dialog.combos[bufferSize]);
    const auto inSamples = [samples](const char* text) {
        return Text::line(text, static_cast<long long>(samples)) + " samples";
    };
    world.debug(inSamples("设置音频缓冲区大小为："));
    std::uint32_t current = 0;
    if (!succeeds(world, Driver::readBufferSize(world, device(world), current),
                  "获取音频缓冲区大小"))
        return;
    world.debug(Text::line("当前音频缓冲区大小：", static_cast<long long>(current)));
    if (current == samples || !lowerLatency(world, samples) || !stop(world))
        return;
    if (!set(world, Code::setBufferSize, samples, "设置音频缓冲区大小") || !restart(world))
        return;
    world.debug(inSamples("音频缓冲区大小设置成功："));
    save(world, bufferSize, "音频缓冲区大小设置已保存：");
}

void applySlowMode(World& world)
{
    if (!stop(world))
        return;
    const bool enabled = world.dialog.combos[slowMode].text() == "Enabled";
    const std::uint32_t code = enabled ? Code::slowModeOn : Code::slowModeOff;
    if (!act(world, code, "设置USB慢速模式") || !restart(world))
        return;
    save(world, slowMode, "USB慢速模式设置已保存：");
}

bool switchOtgOff(World& world)
{
    return succeeds(world, Driver::setOtgOff(world, device(world)), "关闭OTG芯片");
}

bool switchOtgOn(World& world)
{
    return succeeds(world, Driver::setOtgOn(world, device(world)), "开启OTG芯片");
}

void showStored(World& world)
{
    for (const Choice choice : {latency, bufferSize, slowMode, sampleRate})
        choose(world, choice,
               textValue(Files::content(world, fileName), keys[choice], missing[choice]));
    world.debug("已从配置文件加载控件状态");
}

void load(World& world)
{
    Files::open(world, fileName);
    Files::restore(world, fileName, [&] { showStored(world); });
}

} // namespace

void create(World& world)
{
    world.dialog = Dialog();
    world.dialog.combos = {{
        {{"48", "64", "96", "128", "192", "256", "512", "1024"}, 0},
        {{"8", "16", "24", "32"}, 0},
        {{"44100", "48000"}, 0},
        {{"Disabled", "Enabled"}, 0},
    }};
    world.debug("Settings dialog created.");
    Files::open(world, fileName);
    world.time.start(Timer::usbErrors, 1000);
}

bool connectDevice(World& world)
{
    world.dialog.device = Device();
    if (Driver::open(world, *world.dialog.device))
        return true;
    world.debug("Failed to create device in ka1.");
    return false;
}

void choose(World& world, Choice choice, const std::string& item)
{
    Combo& combo = world.dialog.combos[choice];
    const auto found = std::ranges::find(combo.items, item);
    if (found == combo.items.end() || item == combo.text())
        return;
    combo.index = static_cast<std::size_t>(found - combo.items.begin());
    if (choice == bufferSize)
        applyBufferSize(world);
    else if (choice == latency)
        applyLatency(world);
    else if (choice == sampleRate)
        applySampleRate(world);
    else
        applySlowMode(world);
}

void takeUpFile(World& world)
{
    if (world.dialog.served)
        showStored(world);
}

void refreshFromDevice(World& world)
{
    world.dialog.served = true;
    load(world);
    world.debug("加载控件状态完成");
    std::uint32_t current = 0;
    Driver::read(world, device(world), Code::readSampleRate, current);
    world.debug(Text::line("当前音频采样率为：", static_cast<long long>(current)));
    world.dialog.sampleRate = numberOf(world.dialog.combos[sampleRate]);
    if (!stop(world))
        return;
    world.debug("停止音频成功，开始加载控件状态");
    world.sleep(100);
    if (setRateAndChannels(world))
        world.time.startOnce(Timer::otgOffThenInit, 200);
}

void otgOffThenInit(World& world)
{
    if (switchOtgOff(world))
        world.time.startOnce(Timer::initAfterOtg, 200);
}

void initAfterOtg(World& world)
{
    if (switchOtgOn(world) && act(world, Code::initAudio, "初始化音频"))
        world.debug("设置初始化完成");
}

void otgOffThenOn(World& world)
{
    if (switchOtgOff(world))
        world.time.startOnce(Timer::otgOnAfterRateChange, 200);
}

void otgOnAfterRateChange(World& world)
{
    if (switchOtgOn(world))
        world.debug("设置采样频率完成");
}

void updateUsbErrors(World& world)
{
    Dialog& dialog = world.dialog;
    if (!dialog.device || !Driver::readUsbStatus(world, *dialog.device)) {
        world.debug("Failed to read meter data from driver.");
        return;
    }
    const std::uint32_t count = dialog.device->usbErrors;
    dialog.usbLine = count == 0 ? "" : "USB Error Count: " + std::to_string(count);
}

bool isSaved(const World& world)
{
    const auto file = world.files.find(fileName);
    const IniFile stored = file == world.files.end() ? IniFile() : file->second;
    for (const Choice choice : {latency, bufferSize, slowMode, sampleRate}) {
        if (textValue(stored, keys[choice], missing[choice]) != world.dialog.combos[choice].text())
            return false;
    }
    return true;
}

} // namespace Oracle::Settings
