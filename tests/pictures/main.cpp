#include "app/translation.h"
#include "picture_session.h"

#include <QApplication>
#include <QFont>
#include <QTranslator>

#include <cstdio>

/// quorvel-pictures FOLDER: paints the program's windows in every language into FOLDER/LANGUAGE.
/// HOME, XDG_DATA_HOME and QUORVEL_RUNTIME_DIR must name private folders.
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fputs("usage: quorvel-pictures FOLDER\n", stderr);
        return 2;
    }
    // By name: Chinese in its own glyphs and in the weight asked for, whatever else is installed.
    QFont font = QApplication::font();
    font.setFamilies({"DejaVu Sans", "Noto Sans CJK SC"});
    QApplication::setFont(font);
    for (const char* language : {"en_US", "zh_CN"}) {
        QTranslator translator;
        installTranslation(translator, language, QCoreApplication::applicationDirPath());
        PictureSession session(arguments[1] + '/' + language);
        session.panel(SimulatorControl::ka1, "ka1");
        session.panel(SimulatorControl::ka2, "ka2");
        session.panel(SimulatorControl::ks, "ks");
        session.framedWindow();
        session.status();
        session.settingsDialog();
        session.trayMenu();
        if (translator.isEmpty() || !session.complete()) {
            std::fprintf(stderr, "quorvel-pictures: no pictures for %s\n", language);
            return 1;
        }
    }
    return 0;
}
