#include "random/program.h"

#include "app/single_instance.h"
#include "app/translation.h"
#include "controls/button.h"
#include "controls/knob.h"
#include "oracle/surroundings.h"
#include "random/hands.h"
#include "random/record.h"
#include "random/virtual_files.h"
#include "random/virtual_platform.h"
#include "random/virtual_time.h"
#include "settings/settings.h"
#include "shell/main_window.h"
#include "shell/tray_icon.h"
#include "support/settings_files.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTranslator>

#include <cstdio>
#include <map>

// There is always a notification area.
bool QSystemTrayIcon::isSystemTrayAvailable()
{
    return true;
}

namespace {

/// Notes the box that blocks the program, and closes it.
void answerBox()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr)
        qFatal("The program waits and nothing is there to wait for.");
    Record::add("box: " + (box->windowTitle() + ": " + box->text()).toStdString());
    box->button(QMessageBox::Ok)->click();
}

std::vector<QPoint> positions(const Oracle::Action& action)
{
    std::vector<QPoint> points;
    for (std::size_t i = 2; i < action.arguments.size(); ++i) {
        int x = 0;
        int y = 0;
        if (std::sscanf(action.at(i).c_str(), "%d,%d", &x, &y) == 2)
            points.emplace_back(x, y);
    }
    return points;
}

VirtualPlatform::ResetPipe resetPipe(const std::string& state)
{
    using VirtualPlatform::ResetPipe;
    return state == "busy"      ? ResetPipe::busy
           : state == "serves"  ? ResetPipe::serves
           : state == "refuses" ? ResetPipe::refuses
                                : ResetPipe::absent;
}

} // namespace

Program::Program()
{
    VirtualTime::instance().whenIdle = answerBox;
}

Program::~Program()
{
    icon.reset();
    window.reset();
    settings.reset();
    instance.reset();
    forgetSettingsFiles();
    VirtualTime::instance().settle();
}

QString Program::folder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

void Program::perform(const Oracle::Action& action)
{
    const QString name = QString::fromStdString(action.at(0));
    if (action.verb == "start")
        start(name);
    else if (action.verb == "wait")
        VirtualTime::instance().run(action.number(0));
    else if (action.verb == "jump")
        VirtualTime::instance().pass(static_cast<int>(action.number(0)));
    else if (action.verb == "file")
        VirtualFiles::write(action.at(0), action.at(1));
    else if (action.verb == "nofile")
        VirtualFiles::remove(action.at(0));
    else if (action.verb == "resetpipe")
        VirtualPlatform::setResetPipe(resetPipe(action.at(0)));
    else if (!VirtualFiles::apply(action) &&
             !Oracle::Surroundings::apply(VirtualPlatform::interface(), action) && icon)
        whileRunning(action);
    VirtualTime::instance().settle();
}

void Program::whileRunning(const Oracle::Action& action)
{
    if (action.verb == "quit")
        quit();
    else if (action.verb == "secondcopy")
        startSecondCopy();
    else if (action.verb == "tray")
        tray(action);
    else if (action.verb == "combo")
        turnCombo(action);
    else if (action.verb == "dialog")
        useDialog(action.at(0));
    else if (action.verb == "closewindow")
        window->close();
    else if (action.verb == "message" && !VirtualPlatform::sendMessage(action.at(0)))
        Record::add("the message was not served");
    else if (action.verb == "nomessage" && !VirtualPlatform::connectAndVanish())
        Record::add("the client was not served");
    else
        usePanel(action);
}

void Program::start(const QString& locale)
{
    if (icon)
        return;
    instance = std::make_unique<SingleInstance>();
    if (instance->claim() != SingleInstance::Claim::first)
        Record::add("another copy runs");
    QTranslator translator;
    installTranslation(translator, locale, QStringLiteral("/nowhere"));
    settings = std::make_unique<Settings>();
    window = std::make_unique<MainWindow>();
    window->settings = settings.get();
    settings->reinitPending = true;
    icon = std::make_unique<TrayIcon>();
    icon->setMainWindow(window.get());
    icon->setSettingsWindow(settings.get());
    icon->setVisible(true);
    if (!VirtualPlatform::pipeIsServed())
        Record::add("the pipe is not served");
}

void Program::quit()
{
    QAction* const action = entry("Quit");
    QMetaObject::invokeMethod(action, &QAction::trigger, Qt::QueuedConnection);
    Record::add("ended with " + std::to_string(QApplication::exec()));
    SettingsFile::saveAll();
    icon.reset();
    window.reset();
    settings.reset();
    instance.reset();
    forgetSettingsFiles();
    if (!VirtualPlatform::openHandles().empty())
        Record::add("left handles open: " + std::to_string(VirtualPlatform::openHandles().size()));
    Record::takeThreadLines(); // How the thread's wait ends is its own business.
}

void Program::startSecondCopy()
{
    SingleInstance second;
    if (second.claim() == SingleInstance::Claim::alreadyRunning)
        Record::add("second copy ended");
}

QAction* Program::entry(const char* text) const
{
    const auto actions = icon->contextMenu()->actions();
    for (QAction* action : actions) {
        if (action->text() == QLatin1String(text))
            return action;
    }
    qFatal("no menu entry %s", text);
}

void Program::tray(const Oracle::Action& action)
{
    const std::string& what = action.at(0);
    if (what == "main")
        entry("Main Window")->trigger();
    else if (what == "setup")
        entry("Setup")->trigger();
    else if (what == "upgrade")
        entry("Upgrade Firmware")->trigger();
    else if (what == "trigger")
        emit icon->activated(QSystemTrayIcon::Trigger);
    else if (what == "doubleclick")
        emit icon->activated(QSystemTrayIcon::DoubleClick);
    else if (what == "middle")
        emit icon->activated(QSystemTrayIcon::MiddleClick);
    else if (what == "context")
        emit icon->activated(QSystemTrayIcon::Context);
    else if (what == "explorer")
        explorer(action.number(1));
    else if (what == "sound") {
        VirtualPlatform::setShellWorks(action.at(1) != "fails");
        entry("Win Sound Pannel")->trigger();
    }
}

void Program::explorer(long long exitCode)
{
    qputenv("EXPLORER_EXIT", QByteArray::number(exitCode));
    entry("Refresh Audio Device")->trigger();
}

void Program::turnCombo(const Oracle::Action& action)
{
    if (!settings->isVisible() || settings->isMinimized())
        return;
    Hands::activate(*settings);
    QComboBox* combo = settings->findChildren<QComboBox*>().at(static_cast<int>(action.number(0)));
    combo->setFocus();
    const std::string& way = action.at(1);
    Hands::key(*settings, way == "up"      ? Qt::Key_Up
                          : way == "down"  ? Qt::Key_Down
                          : way == "first" ? Qt::Key_Home
                                           : Qt::Key_End);
}

void Program::useDialog(const std::string& what)
{
    if (!settings->isVisible() || settings->isMinimized())
        return;
    Hands::activate(*settings);
    if (what == "close") {
        settings->close();
    } else if (what == "ok") {
        auto* ok = settings->findChild<QPushButton*>();
        Hands::click(*ok, ok->rect().center());
    } else {
        settings->showMinimized();
    }
}

bool Program::isOnScreen() const
{
    return window->isVisible();
}

void Program::usePanel(const Oracle::Action& action)
{
    if (!isOnScreen())
        return;
    Hands::activate(*window);
    const QString key = QString::fromStdString(action.at(0));
    if (auto* knob = window->findChild<Knob*>(key))
        useKnob(*knob, action);
    else if (auto* button = window->findChild<Button*>(key); button != nullptr) {
        if (action.verb == "click")
            Hands::click(*button, button->rect().center());
        else if (action.verb == "doubleclick")
            Hands::doubleClick(*button, button->rect().center());
    } else {
        useKeys(action);
    }
}

void Program::useKnob(Knob& knob, const Oracle::Action& action)
{
    const bool editsItself = knob.editor->isVisible();
    if (action.verb == "wheel") {
        const std::string& way = action.at(1);
        const QPoint rim(3, knob.height() / 2);
        const QPoint position = action.at(2) == "text" ? knob.rect().center() : rim;
        Hands::wheel(knob, position,
                     way == "up"     ? QPoint(0, 120)
                     : way == "down" ? QPoint(0, -120)
                                     : QPoint(120, 0));
    } else if (action.verb == "drag") {
        Hands::drag(knob, positions(action),
                    action.at(1) == "ctrl" ? Qt::ControlModifier : Qt::NoModifier);
    } else if (action.verb == "doubleclick" && action.at(1) == "text") {
        knob.repaint();
        if (!editsItself)
            Hands::doubleClick(knob, knob.rect().center());
    } else if (action.verb == "doubleclick") {
        Hands::doubleClick(knob, {3, knob.height() / 2});
    }
}

void Program::useKeys(const Oracle::Action& action)
{
    static const std::map<std::string, Qt::Key> keys{
        {"enter", Qt::Key_Return},    {"tab", Qt::Key_Tab},
        {"backtab", Qt::Key_Backtab}, {"escape", Qt::Key_Escape},
        {"space", Qt::Key_Space},     {"backspace", Qt::Key_Backspace},
        {"up", Qt::Key_Up},           {"down", Qt::Key_Down},
        {"pageup", Qt::Key_PageUp},   {"pagedown", Qt::Key_PageDown},
        {"end", Qt::Key_End}};
    if (action.verb == "type")
        Hands::type(*window, QString::fromStdString(action.at(0)));
    else if (action.verb == "key")
        Hands::key(*window, keys.at(action.at(0)));
}
