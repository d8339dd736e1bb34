#include <QApplication>
#include <QSystemTrayIcon>

/// quorvel-tray-probe: returns 0 when the desktop has a notification area that the panel would
/// use, 1 when it has none. Without a display the toolkit ends it, with another code.
int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    return QSystemTrayIcon::isSystemTrayAvailable() ? 0 : 1;
}
