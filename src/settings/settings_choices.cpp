#include "settings/settings_choices.h"

namespace {

const QString disabledText = QStringLiteral("Disabled");
const QString enabledText = QStringLiteral("Enabled");

std::optional<std::uint32_t> numberAmong(const QStringList& choices, const QString& text)
{
    if (!choices.contains(text))
        return std::nullopt;
    return text.toUInt();
}

} // namespace

QStringList SettingsChoices::bufferSizes()
{
    return {QStringLiteral("48"),  QStringLiteral("64"),  QStringLiteral("96"),
            QStringLiteral("128"), QStringLiteral("192"), QStringLiteral("256"),
            QStringLiteral("512"), QStringLiteral("1024")};
}

QStringList SettingsChoices::usbLatencies()
{
    return {QStringLiteral("8"), QStringLiteral("16"), QStringLiteral("24"), QStringLiteral("32")};
}

QStringList SettingsChoices::sampleRates()
{
    return {QStringLiteral("44100"), QStringLiteral("48000")};
}

QStringList SettingsChoices::slowModes()
{
    return {disabledText, enabledText};
}

std::optional<std::uint32_t> SettingsChoices::bufferSize(const QString& text)
{
    return numberAmong(bufferSizes(), text);
}

std::uint32_t SettingsChoices::usbLatency(const QString& text)
{
    return numberAmong(usbLatencies(), text).value_or(8);
}

std::optional<std::uint32_t> SettingsChoices::sampleRate(const QString& text)
{
    return numberAmong(sampleRates(), text);
}

std::optional<bool> SettingsChoices::slowMode(const QString& text)
{
    if (text == enabledText)
        return true;
    if (text == disabledText)
        return false;
    return std::nullopt;
}

std::uint32_t SettingsChoices::latencyForBuffer(std::uint32_t samples)
{
    if (samples <= 64)
        return 8;
    if (samples <= 128)
        return 16;
    return samples <= 256 ? 24 : 32;
}
