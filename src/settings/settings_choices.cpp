#include "settings/settings_choices.h"

std::optional<std::uint32_t> SettingsChoices::valueOf(const QString& text,
                                                      std::span<const Choice> choices)
{
    for (const Choice& choice : choices) {
        if (text == QLatin1String(choice.text))
            return choice.value;
    }
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
