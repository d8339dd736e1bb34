#include "platform/taskbar.h"
#include "platform/win32.h"
#include "support/test_main.h"
#include "support/try_compare.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <QTest>

#include <memory>

namespace {

/// Counts the announcements of a taskbar that the toolkit's window for tray icons gets; it adds the
/// icon again upon each.
class Announcements : public QAbstractNativeEventFilter
{
public:
    Announcements() { qApp->installNativeEventFilter(this); }

    int count = 0;

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override
    {
        const MSG& posted = *static_cast<MSG*>(message);
        wchar_t name[64] = {};
        GetWindowTextW(posted.hwnd, name, 64);
        if (posted.message == RegisterWindowMessageW(L"TaskbarCreated") &&
            QString::fromWCharArray(name) == QLatin1String("QTrayIconMessageWindow"))
            ++count;
        return false;
    }
};

} // namespace

class TaskbarTest : public QObject
{
    Q_OBJECT

private slots:
    void trayIconHearsOfIt();
};

void TaskbarTest::trayIconHearsOfIt()
{
    Announcements announcements;
    QPixmap picture(16, 16);
    picture.fill(Qt::red);
    QSystemTrayIcon icon{QIcon(picture)};
    icon.show();
    announceTaskbar();
    QUORVEL_TRY_COMPARE(announcements.count, 1);
}

QUORVEL_TEST_MAIN(TaskbarTest)

#include "taskbar_test.moc"
