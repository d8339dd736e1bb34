#include "platform/taskbar.h"
#include "shell/tray_icon.h"
#include "support/patience.h"
#include "support/test_main.h"

#include <QScopeGuard>
#include <QTest>
#include <QTimer>
#include <private/qguiapplication_p.h>
#include <qpa/qplatformsystemtrayicon.h>
#include <qpa/qplatformtheme.h>

#include <utility>

namespace {

/// A shell that takes an icon when it has been asked for it again so many times.
struct Shell
{
    int takesAfter = 0;
    int asked = 0;
};

Shell* shell = nullptr;

class ShellIcon : public QPlatformSystemTrayIcon
{
public:
    void init() override {}
    void cleanup() override {}
    void updateIcon(const QIcon&) override {}
    void updateToolTip(const QString&) override {}
    void updateMenu(QPlatformMenu*) override {}
    QRect geometry() const override
    {
        return shell->asked < shell->takesAfter ? QRect() : QRect(10, 10, 16, 16);
    }
    void showMessage(const QString&, const QString&, const QIcon&, MessageIcon, int) override {}
    bool isSystemTrayAvailable() const override { return true; }
    bool supportsMessages() const override { return false; }
};

class ShellTheme : public QPlatformTheme
{
public:
    QPlatformSystemTrayIcon* createPlatformSystemTrayIcon() const override { return new ShellIcon; }
};

} // namespace

/// In place of the system's.
void announceTaskbar()
{
    ++shell->asked;
}

/// The icon of a shell that is too busy to take it, as at login.
class TrayRetryTest : public QObject
{
    Q_OBJECT

private slots:
    void asksUntilTheIconIsThere_data();
    void asksUntilTheIconIsThere();
};

void TrayRetryTest::asksUntilTheIconIsThere_data()
{
    QTest::addColumn<int>("takesAfter");
    QTest::addColumn<int>("asked");
    QTest::newRow("taken at once") << 0 << 0;
    QTest::newRow("at the third time") << 3 << 3;
    QTest::newRow("never") << 1000 << 24;
}

void TrayRetryTest::asksUntilTheIconIsThere()
{
    QFETCH(const int, takesAfter);
    QFETCH(const int, asked);
    Shell busy{takesAfter, 0};
    shell = &busy;
    ShellTheme theme;
    QPlatformTheme* const own = std::exchange(QGuiApplicationPrivate::platform_theme, &theme);
    const auto restore = qScopeGuard([own] { QGuiApplicationPrivate::platform_theme = own; });
    TrayIcon tray;
    tray.appear();
    QVERIFY(tray.isVisible());
    auto* retry = tray.findChild<QTimer*>();
    QVERIFY(retry != nullptr && retry->isActive());
    QCOMPARE(retry->interval(), 5000);
    retry->setInterval(0);
    QVERIFY(QTest::qWaitFor([&] { return tray.findChild<QTimer*>() == nullptr; }, patience));
    QCOMPARE(busy.asked, asked);
}

QUORVEL_TEST_MAIN(TrayRetryTest)
#include "tray_retry_test.moc"
