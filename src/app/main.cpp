#include "app/single_instance.h"
#include "app/translation.h"
#include "platform/session_end.h"
#include "settings/settings.h"
#include "shell/main_window.h"
#include "shell/tray_icon.h"

#include <QApplication>
#include <QIcon>
#include <QLocale>
#include <QPixmap>
#include <QTranslator>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const SessionEnd sessionEnd;
    SingleInstance instance;
    QTranslator translator;
    switch (instance.claim()) {
    case SingleInstance::Claim::first:
        break;
    case SingleInstance::Claim::alreadyRunning:
        QCoreApplication::quit();
        return 0;
    case SingleInstance::Claim::failed:
        return -1;
    }
    installTranslation(translator, QLocale::system().name(),
                       QCoreApplication::applicationDirPath());
    const QPixmap icon(QStringLiteral(":/icon/icon.ico"));
    if (!icon.isNull())
        QGuiApplication::setWindowIcon(QIcon(icon));

    Settings settings;
    MainWindow mainWindow;
    mainWindow.settings = &settings;
    settings.reinitPending = true;
    TrayIcon trayIcon;
    trayIcon.setMainWindow(&mainWindow);
    trayIcon.setSettingsWindow(&settings);
    trayIcon.setVisible(true);
    return QApplication::exec();
}
