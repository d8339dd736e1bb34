#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// What the system tests operate: the native build beside the test program, or the Windows
/// program when these variables are set.
///
/// QUORVEL_LAUNCHER   the command that starts Windows programs
/// QUORVEL_PROGRAM    the panel's file, where it is not the QuorvelDriver beside this program
/// QUORVEL_TOOLS      the folder of the Windows builds of our tools
/// WINEPREFIX         the Windows in which it runs
/// QUORVEL_SETTINGS   the folder in which the Windows program keeps its settings
namespace Target {

bool isWindows();

/// How often to try what a user would do once. Under Wine a busy machine takes keys and menus away
/// unseen, and now and then does not start a program; natively nothing does.
int tries();

/// Acts until it shows, `tries` times at most; false when it never did or could not act.
bool actUntil(const std::function<bool()>& act, const std::function<bool()>& shows);

/// The panel's file.
QString program();

/// The command that starts a program of the target.
QStringList command(const QString& program);

/// The command that starts one of our tools ("quorvel-simctl") on the target.
QStringList tool(const QString& name);

/// Where a Windows program keeps its settings files.
QString settingsFolder();

/// Windows' own folder of programs.
QString systemFolder();

/// The locale in which the target's programs write their debug lines in UTF-8.
QString utf8Locale();

} // namespace Target
