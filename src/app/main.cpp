#include "app/single_instance.h"
#include "app/top_level.h"
#include "app/translation.h"
#include "platform/own_plugins.h"
#include "platform/session_end.h"
#include "storage/settings_file.h"

#include <QApplication>
#include <QLocale>
#include <QTranslator>

namespace {

/// Here the toolkit decides where it looks for plug-ins.
QApplication startToolkit(int& argc, char** argv)
{
    const OwnPlugins ownPlugins;
    return QApplication(argc, argv);
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application = startToolkit(argc, argv);
    const SessionEnd sessionEnd(SettingsFile::saveAll);
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
    setApplicationIcon();

    const TopLevel topLevel;
    const int result = QApplication::exec();
    // While this is still the only copy.
    SettingsFile::saveAll();
    return result;
}
