#include "app/top_level.h"

#include "controls/control_accessibility.h"

#include <QGuiApplication>
#include <QIcon>
#include <QPixmap>

TopLevel::TopLevel()
{
    ControlAccessibility::install();
    mainWindow.settings = &settings;
    settings.reinitPending = true;
    trayIcon.setMainWindow(&mainWindow);
    trayIcon.setSettingsWindow(&settings);
    trayIcon.appear();
}

void setApplicationIcon()
{
    const QPixmap icon(QStringLiteral(":/icon/icon.ico"));
    if (!icon.isNull())
        QGuiApplication::setWindowIcon(QIcon(icon));
}
