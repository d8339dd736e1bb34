#include "benchmarks/programs/repeat.h"
#include "controls/knob.h"
#include "driver/device_protocol.h"
#include "panels/ka2.h"
#include "platform/win32.h"
#include "storage/settings_file.h"

#include <QApplication>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QWheelEvent>

#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace {

constexpr const char* mixerKey = "Dial/SpeakerValue";
constexpr const char* packetKey = "Dial/Mic1Value";

/// Turns the wheel over a knob, up and down by turns.
std::function<void()> turnOf(const ka2& panel, const char* key)
{
    auto* knob = panel.findChild<Knob*>(QLatin1String(key));
    if (knob == nullptr)
        qFatal("the panel has no %s", key);
    return [knob, up = false]() mutable {
        up = !up;
        const QPointF centre = knob->rect().center();
        QWheelEvent event(centre, knob->mapToGlobal(centre), QPoint(), QPoint(0, up ? 120 : -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(knob, &event);
    };
}

/// What a step has to do at least.
class RawDuty
{
public:
    RawDuty()
        : settings(equalFile(), QSettings::IniFormat)
        , device(CreateFileW(LR"(\\.\QuorvelAudioBus0)", GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                             nullptr))
    {
        if (device == INVALID_HANDLE_VALUE)
            qFatal("no interface is plugged in");
    }
    ~RawDuty() { CloseHandle(device); }
    RawDuty(const RawDuty&) = delete;
    RawDuty& operator=(const RawDuty&) = delete;

    void sendTable()
    {
        table[MixerCell::output(0)] = table[MixerCell::output(1)] = next() / 100.0;
        send(ControlCode::writeMixerTable, &table, sizeof table);
    }
    void sendPacket()
    {
        ControlPacket packet{.opcode = Opcode::setMicVolume};
        packet.modeOrState = 0x02;
        packet.channel = 1;
        packet.value = static_cast<std::uint16_t>(next());
        send(ControlCode::controlPacket, &packet, sizeof packet);
    }
    void store(const char* key)
    {
        settings.setValue(QLatin1String(key), QString::number(-next()));
        settings.sync();
    }

private:
    static QString equalFile()
    {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
        QString copy = folder + QStringLiteral("/raw.ini");
        QFile::copy(folder + QStringLiteral("/ka2.ini"), copy);
        return copy;
    }
    int next() { return 79 + ++count % 2; }
    void send(DWORD code, void* bytes, DWORD length)
    {
        DWORD returned = 0;
        if (DeviceIoControl(device, code, bytes, length, nullptr, 0, &returned, nullptr) == 0)
            qFatal("the interface refuses");
    }

    QSettings settings;
    HANDLE device;
    MixerTable table{};
    int count = 0;
};

void storeByFile(int value)
{
    static SettingsFile& file = SettingsFile::open(QStringLiteral("ka2.ini"));
    file.store(mixerKey, QString::number(value));
}

} // namespace

/// benchmark-step KIND COUNT: makes COUNT steps of that kind, with a KA2 plugged in, and prints
/// their median duration in microseconds.
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    if (argc != 3)
        qFatal("usage: benchmark-step KIND COUNT");
    const ka2 panel;
    RawDuty raw;
    int value = 0;
    const std::map<std::string, std::function<void()>> kinds{
        {"mixer-knob", turnOf(panel, mixerKey)},
        {"mixer-raw",
         [&] {
             raw.sendTable();
             raw.store(mixerKey);
         }},
        {"packet-knob", turnOf(panel, packetKey)},
        {"packet-raw",
         [&] {
             raw.sendPacket();
             raw.store(packetKey);
         }},
        {"file", [&] { storeByFile(-79 - ++value % 2); }},
        {"file-raw", [&] { raw.store(mixerKey); }},
        {"nothing", [] {}},
    };
    const auto kind = kinds.find(argv[1]);
    if (kind == kinds.end())
        qFatal("no such kind of step: %s", argv[1]);
    repeat(std::stoi(argv[2]), kind->second);
    return 0;
}
