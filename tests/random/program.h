#pragma once

#include "oracle/action.h"

#include <QWidget>

#include <memory>
#include <string>
#include <vector>

class Button;
class Knob;
class MainWindow;
class Settings;
class SingleInstance;
class TrayIcon;
class QAction;

/// The real program in this process, wired as its entry routine does it, operated through what its
/// users have: mouse, keys, menu entries, the cable, the files, the pipes. What is not on the
/// screen is not touched.
class Program
{
public:
    Program();
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void perform(const Oracle::Action& action);

    /// As Oracle::screen() and Oracle::storage() tell them.
    std::vector<std::string> screen() const;
    static std::vector<std::string> storage();

    /// The folder of the INI files.
    static QString folder();

private:
    void start(const QString& locale);
    void quit();
    void startSecondCopy();
    void tray(const Oracle::Action& action);
    void explorer(long long exitCode);
    void turnCombo(const Oracle::Action& action);
    void useDialog(const std::string& what);
    void usePanel(const Oracle::Action& action);
    void useKnob(Knob& knob, const Oracle::Action& action);
    void useKeys(const Oracle::Action& action);
    void whileRunning(const Oracle::Action& action);
    bool isOnScreen() const;
    QAction* entry(const char* text) const;

    std::unique_ptr<SingleInstance> instance;
    std::unique_ptr<Settings> settings;
    std::unique_ptr<MainWindow> window;
    std::unique_ptr<TrayIcon> icon;
};
