#include "system/stored_story.h"

#include "support/panel_table.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace {

const QString panelFile = QStringLiteral("ka1.ini/");
const QString volumeKey = QStringLiteral("ka1.ini/Dial/HeadphoneValue");
const QString muteKey = QStringLiteral("ka1.ini/Button/HeadphoneMuteIsChecked");
const QString dimKey = QStringLiteral("ka1.ini/Button/HeadphoneDimIsChecked");
const QString levelReceived = QStringLiteral("the headphone's level");
constexpr const char* micKey = "ka1.ini/Dial/MicValue";
constexpr const char* phoneKey = "ka1.ini/Dial/OtgToHpValue";
constexpr const char* monitorKey = "ka1.ini/Button/MonitorMicIsChecked";
constexpr const char* rateKey = "setting.ini/Audio/SampleRate";
constexpr const char* bufferKey = "setting.ini/Audio/BufferSize";
constexpr const char* latencyKey = "setting.ini/USB/LatencySize";
constexpr const char* slowKey = "setting.ini/USB/SlowMode";

constexpr int floorDb = -80;
constexpr int highestDb = 6;
constexpr int dimDb = 20;

constexpr int monitorCell = 2048;
constexpr int phoneCell = 2050;
constexpr int headphoneCell = 8192;

QString truth(bool on)
{
    return on ? QStringLiteral("true") : QStringLiteral("false");
}

int decibels(double gain)
{
    return gain > 0 ? static_cast<int>(std::lround(20 * std::log10(gain))) : floorDb;
}

/// What an interface with these files is told if nobody touches anything.
StoredStory::Entries withDefaults(const StoredStory::Entries& files)
{
    StoredStory::Entries entries;
    for (const PanelTable::Control& control : PanelTable::ka1) {
        if (control.isButton())
            entries.insert(panelFile + control.key, truth(false));
        else if (control.isKnob())
            entries.insert(panelFile + control.key, QStringLiteral("0"));
    }
    entries.insert(volumeKey, QString::number(floorDb));
    entries.insert(files);
    return entries;
}

/// The switch that sends a command with this opcode; empty when there is none.
QString switchWith(int opcode)
{
    const auto* const found =
        std::ranges::find(PanelTable::ka1, opcode, &PanelTable::Control::opcode);
    return found != std::end(PanelTable::ka1) && opcode != 0 ? panelFile + found->key : QString();
}

/// Whether the requests tell this entry. The headphone's three are told by one level together, and
/// of a control that is not known here nothing is.
bool isTold(const QString& key)
{
    if (!key.startsWith(panelFile) || key == QLatin1String(micKey) ||
        key == QLatin1String(phoneKey) || key == QLatin1String(monitorKey))
        return true;
    return std::ranges::any_of(PanelTable::ka1, [&](const PanelTable::Control& control) {
        return control.opcode != 0 && key == panelFile + control.key;
    });
}

QString number(const QByteArray& input)
{
    return input.size() < 4 ? QStringLiteral("no number")
                            : QString::number(qFromLittleEndian<quint32>(input.constData()));
}

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
    : settled(withDefaults(atStart))
    , stored(atStart.keyBegin(), atStart.keyEnd())
    , outputs{outputIn(settled)}
    , received{{rateKey, QStringLiteral("44100")},
               {bufferKey, QStringLiteral("192")},
               {latencyKey, QStringLiteral("24")},
               {slowKey, QStringLiteral("Disabled")}}
{
}

int StoredStory::Output::level() const
{
    return muted ? floorDb : std::max(floorDb, dimmed ? volume - dimDb : volume);
}

StoredStory::Output StoredStory::outputIn(const Entries& files)
{
    const Entries entries = withDefaults(files);
    return {entries.value(volumeKey).toInt(), entries.value(muteKey) == truth(true),
            entries.value(dimKey) == truth(true)};
}

void StoredStory::take(const TracedRequest& request)
{
    takeAsSaved();
    if (!request.accepted)
        return;
    switch (request.code) {
    case 0xFFDC209C:
        takeCommand(request.input);
        break;
    case 0xFFDC2040:
        takeTable(request.cells);
        break;
    case 0xFFDC20A0: // The firmware is read when the panel stands.
        judgeReplay();
        break;
    case 0xFFDC2038:
        choose(rateKey, number(request.input));
        break;
    case 0xFFDC2044:
        choose(bufferKey, number(request.input));
        break;
    case 0xFFDC2050:
        choose(latencyKey, number(request.input));
        break;
    case 0xFFDC2090:
        choose(slowKey, QStringLiteral("Enabled"));
        break;
    case 0xFFDC2094:
        choose(slowKey, QStringLiteral("Disabled"));
        break;
    case 0xFFDC207C: // The engine goes on: what was chosen is saved.
    case 0xFFDC2080:
        applyChoice();
        break;
    default:
        break;
    }
}

void StoredStory::takeCommand(const QByteArray& packet)
{
    switch (packet.at(1)) {
    case 0x07:
        announce(QLatin1String(micKey),
                 QString::number(qFromLittleEndian<quint16>(packet.constData() + 5) / 2));
        break;
    case 0x5E: // A sample rate that is sent again at arrival is not saved.
        choice.reset();
        break;
    default:
        if (const QString key = switchWith(packet.at(1)); !key.isEmpty())
            announce(key, truth(packet.at(3) != 0));
        break;
    }
}

void StoredStory::takeTable(const QMap<int, double>& changedCells)
{
    table.insert(changedCells);
    received.insert(monitorKey, truth(table.value(monitorCell) == 1));
    received.insert(phoneKey, QString::number(decibels(table.value(phoneCell))));
    const int level = decibels(table.value(headphoneCell));
    received.insert(levelReceived, QString::number(level));
    // What a panel sends while it is built is not what its knobs show.
    if (!replayed)
        return;
    ++changeCount;
    if (changedCells.contains(monitorCell))
        pending.insert(monitorKey, received.value(monitorKey));
    else if (changedCells.contains(phoneCell))
        pending.insert(phoneKey, received.value(phoneKey));
    else
        pendingOutputs = outputsWith(level);
}

QList<StoredStory::Output> StoredStory::outputsWith(int level) const
{
    QList<Output> found;
    for (const Output& output : outputs) {
        const int up = std::min(output.volume + 1, highestDb);
        const int down = std::max(output.volume - 1, floorDb);
        for (const Output& next : {output, Output{up, output.muted, output.dimmed},
                                   Output{down, output.muted, output.dimmed},
                                   Output{output.volume, !output.muted, output.dimmed},
                                   Output{output.volume, output.muted, !output.dimmed}}) {
            if (next.level() == level && !found.contains(next))
                found.append(next);
        }
    }
    return found;
}

void StoredStory::choose(const char* key, const QString& value)
{
    choice.emplace(QLatin1String(key), value);
    received.insert(choice->first, value);
}

void StoredStory::applyChoice()
{
    if (!choice)
        return;
    pending.insert(choice->first, choice->second);
    choice.reset();
    choiceCount += replayed ? 1 : 0;
}

void StoredStory::announce(const QString& key, const QString& value)
{
    pending.insert(key, value);
    received.insert(key, value);
    changeCount += replayed ? 1 : 0;
}

void StoredStory::takeAsSaved()
{
    for (auto entry = pending.cbegin(); entry != pending.cend(); ++entry) {
        settled.insert(entry.key(), entry.value());
        stored.insert(entry.key());
    }
    pending.clear();
    if (!pendingOutputs.isEmpty())
        outputs = std::exchange(pendingOutputs, {});
}

void StoredStory::judgeReplay()
{
    if (std::exchange(replayed, true))
        return;
    Entries expected = settled;
    expected.removeIf([](const auto& entry) { return !isTold(entry.key()); });
    expected.insert(levelReceived, QString::number(outputs.first().level()));
    // What a list shows anyway is no change, and not sent.
    expected.removeIf([](const auto& entry) {
        return (entry.key() == QLatin1String(bufferKey) && entry.value() == u"48") ||
               (entry.key() == QLatin1String(latencyKey) && entry.value() == u"8");
    });
    for (auto entry = expected.cbegin(); entry != expected.cend(); ++entry) {
        if (received.value(entry.key()) != entry.value())
            replayFlaw = QStringLiteral("%1 is %2, received was %3")
                             .arg(entry.key(), entry.value(), received.value(entry.key()));
    }
    // All that came back is stored again, the defaults for what was missing as well.
    stored.unite(QSet<QString>(settled.keyBegin(), settled.keyEnd()));
}

QString StoredStory::flawOf(const Entries& files) const
{
    const Output output = outputIn(files);
    if (!outputs.contains(output) && !pendingOutputs.contains(output))
        return QStringLiteral("volume %1, mute %2, dim %3 do not lead to the level that was sent")
            .arg(output.volume)
            .arg(output.muted)
            .arg(output.dimmed);
    for (auto entry = files.cbegin(); entry != files.cend(); ++entry) {
        const QString& key = entry.key();
        if (isTold(key) && entry.value() != settled.value(key) &&
            entry.value() != pending.value(key))
            return QStringLiteral("%1 is %2, but was %3, then %4")
                .arg(key, entry.value(), settled.value(key), pending.value(key));
    }
    for (const QString& key : stored) {
        if (!files.contains(key))
            return key + QStringLiteral(" is lost");
    }
    return {};
}

int StoredStory::lastMomentSaves(const Entries& files) const
{
    int count = 0;
    for (auto entry = pending.cbegin(); entry != pending.cend(); ++entry) {
        if (settled.value(entry.key()) != entry.value() &&
            files.value(entry.key()) == entry.value())
            ++count;
    }
    return count;
}
