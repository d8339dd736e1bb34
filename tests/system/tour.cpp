#include "system/desktop/panel_session.h"
#include "system/desktop/picture_search.h"
#include "system/desktop/tray_menu.h"
#include "system/desktop/wait_until.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QRegularExpression>

#include <cstdio>
#include <functional>

namespace {

void say(const QString& text)
{
    std::puts(qUtf8Printable(text));
    std::fflush(stdout);
}

/// A walk through the panel as a user would take it, with a simulated interface.
class Tour
{
public:
    Tour(QString modelName, const QString& pictureFolder)
        : model(std::move(modelName))
        , pictures(pictureFolder)
    {
    }

    bool take()
    {
        return step(QStringLiteral("the picture folder is made"),
                    [this] { return makeFolder(); }) &&
               step(QStringLiteral("the simulated interface is plugged in"),
                    [this] { return plugIn(); }) &&
               step(QStringLiteral("the panel runs"), [this] { return session.startPanel(); }) &&
               step(QStringLiteral("a click on the tray icon opens the main window"),
                    [this] { return openWindow(); }) &&
               step(QStringLiteral("the window shows the model's knobs"),
                    [this] { return findKnobs(); }) &&
               step(QStringLiteral("three wheel notches turn the Gain knob"),
                    [this] { return turnGain(); }) &&
               step(QStringLiteral("the tray menu's Setup opens the settings"),
                    [this] { return openSettings(); }) &&
               step(QStringLiteral("both windows are photographed"),
                    [this] { return takePictures(); }) &&
               step(QStringLiteral("the requests reached the interface"),
                    [this] { return printRequests(); }) &&
               step(QStringLiteral("the settings were saved"),
                    [this] { return printSettings(); }) &&
               step(QStringLiteral("the tray menu's Quit ends the panel"),
                    [this] { return quit(); });
    }

private:
    static bool step(const QString& what, const std::function<bool()>& action)
    {
        if (action()) {
            say(QStringLiteral("[ok] ") + what);
            return true;
        }
        std::fprintf(stderr, "quorvel-tour: failed: %s\n", qUtf8Printable(what));
        return false;
    }

    QString fileName() const { return model + QStringLiteral(".ini"); }
    QString pictureFile(const QString& name) const
    {
        return pictures.absoluteFilePath(model + QLatin1Char('-') + name + QStringLiteral(".png"));
    }

    bool makeFolder() { return pictures.mkpath(QStringLiteral(".")); }

    bool plugIn()
    {
        return session.startSimulator() && session.simulator().plug(model) &&
               session.simulator().moveLevels();
    }

    bool openWindow()
    {
        return session.openMainWindow() &&
               Desktop::waitForWindow(QStringLiteral("^Quorvel %1 - FW: ").arg(model.toUpper()));
    }

    bool findKnobs()
    {
        return waitUntil([this] {
            const auto now = Desktop::window(QStringLiteral("^Quorvel "));
            if (!now)
                return false;
            window = *now;
            knobs = knobsIn(PanelSession::pictureOf(window));
            return knobs.size() >= 2;
        });
    }

    bool turnGain()
    {
        return session.simulator().clearTrace() &&
               Desktop::wheel(window.area.topLeft() + knobs.first(), 3) &&
               session.panel().waitForLine(QStringLiteral("Mic volume set to: 3"));
    }

    bool openSettings()
    {
        if (!chooseFromTrayMenu(TrayEntry::Setup))
            return false;
        const auto found = Desktop::waitForWindow(QStringLiteral("^Settings$"));
        dialog = found.value_or(DesktopWindow());
        return found.has_value();
    }

    bool takePictures() const
    {
        // The dialog paints itself a moment after it appears, and covers the window.
        QThread::msleep(300);
        const bool saved =
            PanelSession::pictureOf(dialog).save(pictureFile(QStringLiteral("settings")));
        if (!Desktop::activate(window))
            return false;
        QThread::msleep(300);
        return saved && PanelSession::pictureOf(window).save(pictureFile(QStringLiteral("panel")));
    }

    /// Most of a command record is zeros.
    static QString withoutZeros(QString line)
    {
        static const QRegularExpression zeros(QStringLiteral("( 00){4,}(?= out=)"));
        return line.replace(zeros, QStringLiteral(" 00 ..."));
    }

    /// The polling of levels and connection would bury the rest.
    bool printRequests() const
    {
        const QString polling = QStringLiteral("FFDC2074 FFDC2084 FFDC20C0");
        int polls = 0;
        int others = 0;
        const auto received = session.simulator().traceLines();
        if (!received)
            return false;
        for (const QString& line : *received) {
            if (polling.contains(line.section(QLatin1Char(' '), 1, 1))) {
                ++polls;
            } else {
                ++others;
                say(QStringLiteral("     ") + withoutZeros(line));
            }
        }
        say(QStringLiteral("     and %1 reads of levels, product id and status").arg(polls));
        return others > 0 && polls > 0;
    }

    bool printSettings()
    {
        QFile file(session.folder().settingsFile(fileName()));
        if (!file.open(QFile::ReadOnly))
            return false;
        for (const QString& line :
             QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            say(QStringLiteral("     ") + line);
        return true;
    }

    bool quit()
    {
        if (!chooseFromTrayMenu(TrayEntry::Quit) || session.panel().waitForExit() != 0)
            return false;
        say(QStringLiteral("Pictures: %1\n          %2")
                .arg(pictureFile(QStringLiteral("panel")),
                     pictureFile(QStringLiteral("settings"))));
        return true;
    }

    QString model;
    QDir pictures;
    PanelSession session;
    DesktopWindow window;
    DesktopWindow dialog;
    QList<QPoint> knobs;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Takes a guided tour through the panel on the display at hand."));
    const QCommandLineOption pictures(QStringLiteral("pictures"),
                                      QStringLiteral("Where the pictures go."),
                                      QStringLiteral("folder"), QDir::currentPath());
    parser.addOption(pictures);
    parser.addPositionalArgument(QStringLiteral("model"), QStringLiteral("ka1, ka2 or ks"));
    parser.addHelpOption();
    parser.process(application);
    const QString model = parser.positionalArguments().value(0, QStringLiteral("ka1"));
    return Tour(model, parser.value(pictures)).take() ? 0 : 1;
}
