#include "benchmarks/programs/equal_window.h"

#include <QAction>
#include <QApplication>
#include <QIcon>
#include <QMainWindow>
#include <QMenu>
#include <QStringList>
#include <QSystemTrayIcon>

/// benchmark-bare [--controls] [--shown]: the smallest program that has an icon in the notification
/// area, with a menu, and a hidden window. --controls fills the window with as many controls as the
/// KA2 panel has, --shown shows it.
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QApplication::arguments();
    const QIcon image(QStringLiteral(":/icon/icon.png"));

    QMainWindow window;
    window.setWindowIcon(image);
    if (arguments.contains(QStringLiteral("--controls")))
        fillLikeKa2(window);

    QMenu menu;
    QObject::connect(menu.addAction(QStringLiteral("Show")), &QAction::triggered, &window,
                     &QWidget::show);
    QObject::connect(menu.addAction(QStringLiteral("Quit")), &QAction::triggered, &application,
                     [] { QCoreApplication::exit(0); });
    QSystemTrayIcon icon(image);
    icon.setContextMenu(&menu);
    icon.show();
    if (arguments.contains(QStringLiteral("--shown")))
        window.show();
    return QApplication::exec();
}
