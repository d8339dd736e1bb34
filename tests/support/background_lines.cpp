#include "support/background_lines.h"

#include <algorithm>

namespace {

const QStringList background{
    QStringLiteral("Failed to read meter data from driver."),
    QStringLiteral("Pipe created successfully."),
    QStringLiteral("ThreadSettingsPip initialized."),
    QStringLiteral("Error: Could not create pipe. Error code: 6"),
    QStringLiteral("Failed to create named pipe in ThreadSettingsPip."),
    QStringLiteral("ThreadSettingsPip is running waiting Asio Info..."),
    QStringLiteral("Error connecting to pipe. Error code: 6"),
    QStringLiteral("Error connecting to pipe. Error code: 995"),
    QStringLiteral("No data received from pipe."),
};

} // namespace

QStringList withoutBackground(QStringList lines)
{
    lines.removeIf([](const QString& line) { return background.contains(line); });
    return lines;
}
