#include "system/stored_story.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <cmath>

namespace {

const QString panelFile = QStringLiteral("ka1.ini/");
const QString dialogFile = QStringLiteral("setting.ini/");
const QString volumeKey = panelFile + QStringLiteral("Dial/HeadphoneValue");
const QString slowModeKey = dialogFile + QStringLiteral("USB/SlowMode");

constexpr int floorDb = -80;
constexpr int dimDb = 20;

QString truth(bool on)
{
    return on ? QStringLiteral("true") : QStringLiteral("false");
}

int decibels(const QString& gain)
{
    const double value = gain.toDouble();
    return value > 0 ? static_cast<int>(std::lround(20 * std::log10(value))) : floorDb;
}

/// The rest of the line behind these words; nothing when it begins otherwise.
std::optional<QString> after(const char* words, const QString& line)
{
    const QString start = QString::fromUtf8(words) + QLatin1Char(' ');
    return line.startsWith(start) ? std::optional(line.mid(start.size())) : std::nullopt;
}

/// "8 Frame" and "\"48000\"" without what is not the value.
QString bare(QString text)
{
    text.remove(QLatin1Char('"'));
    return text.section(QLatin1Char(' '), 0, 0);
}

bool isOfThePipe(const QString& line)
{
    static const QRegularExpression words(QStringLiteral("[Pp]ipe|ASIO|Asio"));
    return words.match(line).hasMatch();
}

struct Words
{
    const char* words;
    const char* key;
};

constexpr Words switched[] = {
    {"Mic instruction switched for channel 1.", "Button/MicInstrIsChecked"},
    {"Mic 20dB switched for channel 1.", "Button/Mic20dBIsChecked"},
    {"Mic 48V switched for channel 1.", "Button/Mic48VIsChecked"},
};

constexpr Words chosen[] = {
    {"设置USB延迟大小为：", "USB/LatencySize"},
    {"设置音频缓冲区大小为：", "Audio/BufferSize"},
    {"设置音频采样率为：", "Audio/SampleRate"},
};

constexpr Words saved[] = {
    {"USB延迟大小设置已保存：", "USB/LatencySize"},
    {"音频缓冲区大小设置已保存：", "Audio/BufferSize"},
    {"音频采样率设置已保存：", "Audio/SampleRate"},
    {"USB慢速模式设置已保存：", "USB/SlowMode"},
};

} // namespace

std::optional<StoredStory::Entries> StoredStory::read(const QString& fullName)
{
    static const QRegularExpression group(QStringLiteral("^\\[(\\w+)\\]$"));
    static const QRegularExpression entry(QStringLiteral("^(\\w+)=(-?\\w+)$"));
    QFile file(fullName);
    if (!file.exists())
        return Entries();
    if (!file.open(QFile::ReadOnly | QFile::Text))
        return std::nullopt;
    const QString name = fullName.section(QLatin1Char('/'), -1);
    Entries entries;
    QString prefix;
    const QString text = QString::fromUtf8(file.readAll());
    for (const QString& line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const auto asGroup = group.match(line);
        const auto asEntry = entry.match(line);
        if (asGroup.hasMatch())
            prefix = name + QLatin1Char('/') + asGroup.captured(1) + QLatin1Char('/');
        else if (asEntry.hasMatch() && !prefix.isEmpty())
            entries.insert(prefix + asEntry.captured(1), asEntry.captured(2));
        else
            return std::nullopt;
    }
    return entries;
}

StoredStory::StoredStory(const Entries& atStart)
    : settled(atStart)
    , startingSwitches(atStart)
{
}

void StoredStory::take(const QString& line)
{
    if (isOfThePipe(line))
        return;
    settle();
    if (takePanelLine(line))
        applying.clear(); // The dialog's sequence is over.
    else
        takeDialogLine(line);
}

bool StoredStory::takePanelLine(const QString& line)
{
    if (const auto gain = after("Mic volume set to:", line))
        announce(panelFile + QStringLiteral("Dial/MicValue"), *gain);
    else if (const auto phone = after("OTG to HP volume set to:", line))
        announce(panelFile + QStringLiteral("Dial/OtgToHpValue"),
                 QString::number(decibels(*phone)));
    else if (const auto volume = after("Headphone volume set to:", line))
        takeHeadphone(*volume);
    else if (const auto direct = after("Monitor Mic set to:", line))
        announce(panelFile + QStringLiteral("Button/MonitorMicIsChecked"),
                 truth(*direct == QStringLiteral("1")));
    else if (const auto mute = after("Headphone Mute Button Clicked: Mute", line)) {
        muted = *mute == QStringLiteral("ON");
        outputSwitches.insert(panelFile + QStringLiteral("Button/HeadphoneMuteIsChecked"),
                              truth(muted));
    } else if (const auto dim = after("Headphone Dim Button Clicked: Dim", line)) {
        dimmed = *dim == QStringLiteral("ON");
        outputSwitches.insert(panelFile + QStringLiteral("Button/HeadphoneDimIsChecked"),
                              truth(dimmed));
    } else {
        for (const Words& row : switched) {
            if (line == QLatin1String(row.words)) {
                takeSwitch(panelFile + QLatin1String(row.key));
                return true;
            }
        }
        return false;
    }
    return true;
}

void StoredStory::takeDialogLine(const QString& line)
{
    for (const Words& row : chosen) {
        if (const auto value = after(row.words, line))
            applying.insert(dialogFile + QLatin1String(row.key), bare(*value));
    }
    for (const Words& row : saved) {
        if (const auto value = after(row.words, line)) {
            const QString key = dialogFile + QLatin1String(row.key);
            settle(key, bare(*value));
            applying.remove(key);
            ++changeCount;
        }
    }
}

void StoredStory::takeHeadphone(const QString& gain)
{
    const int level = decibels(gain);
    const bool told = !muted && (level > floorDb || !dimmed);
    announce(volumeKey, told ? QString::number(dimmed ? level + dimDb : level) : QString());
    for (auto entry = outputSwitches.cbegin(); entry != outputSwitches.cend(); ++entry)
        announce(entry.key(), entry.value());
    outputSwitches.clear();
}

/// The first time it is restored; then each click tells twice.
void StoredStory::takeSwitch(const QString& key)
{
    const bool atStart = startingSwitches.value(key) == truth(true);
    const bool turned = (switches[key]++ + 1) / 2 % 2 == 1;
    announce(key, truth(atStart != turned));
}

/// An empty value is one that the line does not tell.
void StoredStory::announce(const QString& key, const QString& value)
{
    pending.insert(key, value);
    ++changeCount;
}

/// A later line proves that what was announced before has been saved.
void StoredStory::settle()
{
    for (auto entry = pending.cbegin(); entry != pending.cend(); ++entry)
        settle(entry.key(), entry.value());
    pending.clear();
}

void StoredStory::settle(const QString& key, const QString& value)
{
    settled.insert(key, value);
    if (value.isEmpty())
        unknown.insert(key);
    else
        unknown.remove(key);
}

bool StoredStory::allows(const QString& key, const QString& value) const
{
    if (settled.contains(key) && settled.value(key) == value)
        return true;
    if (unknown.contains(key) || (pending.contains(key) && pending.value(key).isEmpty())) {
        const int number = value.toInt();
        return number >= floorDb && number <= 6;
    }
    // Its line comes when it is saved, and none comes before.
    if (key == slowModeKey)
        return value == QStringLiteral("Enabled") || value == QStringLiteral("Disabled");
    return !value.isEmpty() && (pending.value(key) == value || applying.value(key) == value);
}

QString StoredStory::flawOf(const Entries& files) const
{
    for (auto entry = files.cbegin(); entry != files.cend(); ++entry) {
        if (!allows(entry.key(), entry.value()))
            return QStringLiteral("%1 is %2, but was %3, then %4%5")
                .arg(entry.key(), entry.value(), settled.value(entry.key()),
                     pending.value(entry.key()), applying.value(entry.key()));
    }
    for (auto entry = settled.cbegin(); entry != settled.cend(); ++entry) {
        if (!files.contains(entry.key()))
            return entry.key() + QStringLiteral(" is lost");
    }
    return {};
}

int StoredStory::lastMomentSaves(const Entries& files) const
{
    int count = 0;
    for (auto entry = pending.cbegin(); entry != pending.cend(); ++entry) {
        if (!entry.value().isEmpty() && settled.value(entry.key()) != entry.value() &&
            files.value(entry.key()) == entry.value())
            ++count;
    }
    return count;
}
