#include "shell/desktop_helpers.h"

#include "platform/win32.h"

#include <QDebug>
#include <QMessageBox>
#include <QProcess>

#include <cstdint>

namespace {

constexpr int restartTimeout = 5000;
constexpr std::intptr_t highestShellError = 32;

} // namespace

void DesktopHelpers::openSoundPanel()
{
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
    QProcess process;
    process.start(QStringLiteral("cmd.exe"),
                  {QStringLiteral("/c"),
                   QStringLiteral("taskkill /f /im explorer.exe && start explorer.exe")},
                  QIODevice::ReadWrite);
    if (!process.waitForFinished(restartTimeout)) {
        qWarning() << "重启资源管理器超时";
        qWarning() << "错误信息:" << process.errorString();
    }
    // A process that still runs reports 0, so the line of success follows those of the time-out.
    if (process.exitCode() == 0) {
        qDebug() << "资源管理器已成功重启";
        return;
    }
    qWarning() << "命令执行失败，退出代码:" << process.exitCode();
    qWarning() << "输出:" << process.readAllStandardOutput();
    qWarning() << "错误输出:" << process.readAllStandardError();
}
