#include "platform/own_plugins.h"
#include "support/test_main.h"

#include <QTest>

/// That nothing is loaded from where the variables lead is for system_package_guards_test.
class OwnPluginsWindowsTest : public QObject
{
    Q_OBJECT

private slots:
    void variablesAreHiddenForAWhile();
};

void OwnPluginsWindowsTest::variablesAreHiddenForAWhile()
{
    const char* name = "QT_PLUGIN_PATH";
    QVERIFY(qputenv(name, R"(C:\Qt\plugins)"));
    {
        const OwnPlugins ownPlugins;
        QVERIFY(!qEnvironmentVariableIsSet(name));
    }
    QCOMPARE(qgetenv(name), QByteArray(R"(C:\Qt\plugins)"));
    QVERIFY(qunsetenv(name));
}

QUORVEL_TEST_MAIN(OwnPluginsWindowsTest)
#include "own_plugins_windows_test.moc"
