#include "shell/desktop_helpers.h"

#include "platform/system_folder.h"
#include "platform/win32.h"

#include <QDebug>
#include <QDir>
#include <QMessageBox>
#include <QProcess>

#include <cstdint>

namespace {

constexpr int restartTimeout = 5000;
constexpr std::intptr_t highestShellError = 32;

/// The system's programs are looked for in the current folder first, and what is started works in
/// it: not in one that came from who started this program. Returns the folder, empty where the
/// system has none.
QString enterSystemFolder()
{
    QString folder = QString::fromStdWString(systemFolder());
    if (!folder.isEmpty())
        QDir::setCurrent(folder);
    return folder;
}

} // namespace

void DesktopHelpers::openSoundPanel()
{
    enterSystemFolder();
    const HINSTANCE result =
        ShellExecuteA(nullptr, "open", "control.exe", "mmsys.cpl", nullptr, SW_SHOWNORMAL);
    if (reinterpret_cast<std::intptr_t>(result) <= highestShellError) {
        QMessageBox::warning(nullptr, QStringLiteral("错误"),
                             QStringLiteral("无法打开声音设置面板，请检查系统设置。"));
        return;
    }
    qDebug() << "声音设置面板已打开。";
}

void DesktopHelpers::restartExplorer()
{
    const QString folder = enterSystemFolder();
    const QString interpreter = QStringLiteral("cmd.exe");
    QProcess process;
    process.start(folder.isEmpty() ? interpreter : folder + u'/' + interpreter,
                  {QStringLiteral("/c"),
                   QStringLiteral("taskkill /f /im explorer.exe && start explorer.exe")},
                  QIODevice::ReadWrite);
    if (!process.waitForFinished(restartTimeout)) {
        qWarning() << "重启资源管理器超时";
        qWarning() << "错误信息:" << process.errorString();
    }
    // A process that still runs reports 0, so the line of success follows those of the time-out.
    // On Windows one that never started reports 0 as well.
    if (process.exitCode() == 0 && process.error() != QProcess::FailedToStart) {
        qDebug() << "资源管理器已成功重启";
        return;
    }
    qWarning() << "命令执行失败，退出代码:" << process.exitCode();
    qWarning() << "输出:" << process.readAllStandardOutput();
    qWarning() << "错误输出:" << process.readAllStandardError();
}
