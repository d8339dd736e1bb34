#include "system/desktop/desktop.h"
#include "system/desktop/tray_menu.h"
#include "system/desktop/wait_until.h"

#include <QApplication>

#include <cstdio>

using namespace std::chrono_literals;

namespace {

bool visit(const QString& model)
{
    // Whoever started it may have had something to build first.
    waitUntil([] { return !Desktop::trayIcons().value_or(QList<QRect>()).isEmpty(); }, 60s);
    const auto icon = Desktop::waitForTrayIcon();
    if (!icon) {
        std::fputs("quorvel-visitor: there is no icon\n", stderr);
        return false;
    }
    if (!Desktop::click(icon->center()) ||
        !Desktop::waitForWindow(QStringLiteral("^Quorvel %1 - FW: ").arg(model.toUpper()))) {
        std::fputs("quorvel-visitor: a click on the icon opens no panel of that model\n", stderr);
        return false;
    }
    if (!chooseFromTrayMenu(TrayEntry::Quit)) {
        std::fputs("quorvel-visitor: the menu's Quit cannot be chosen\n", stderr);
        return false;
    }
    std::printf("The panel of %s was there, and Quit was chosen\n", qUtf8Printable(model));
    return true;
}

} // namespace

/// quorvel-visitor MODEL: looks at a panel that somebody else has started on this display, with
/// that model plugged in, and ends it by its menu.
int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fputs("usage: quorvel-visitor ka1|ka2|ks\n", stderr);
        return 2;
    }
    return visit(arguments[1]) ? 0 : 1;
}
