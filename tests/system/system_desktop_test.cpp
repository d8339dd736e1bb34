#include "support/test_main.h"
#include "system/desktop/simulator_tool.h"
#include "system/desktop/system_test.h"

#include <QDir>
#include <QFile>

namespace {

/// An environment variable that is another for a while.
class Variable
{
public:
    Variable(const char* variable, const QByteArray& value)
        : name(variable)
        , previous(qgetenv(variable))
    {
        qputenv(name, value);
    }
    ~Variable() { qputenv(name, previous); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* name;
    QByteArray previous;
};

} // namespace

/// The hands and eyes of the other system tests tell "there is none" from "cannot tell".
class SystemDesktop : public SystemTest
{
    Q_OBJECT

private slots:
    void failingToolIsNoAnswer_data();
    void failingToolIsNoAnswer();
    void missingSimulatorIsNoAnswer();
};

void SystemDesktop::failingToolIsNoAnswer_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("crashed") << QByteArray("kill -SEGV $$");
    QTest::newRow("failed") << QByteArray("echo trouble >&2; exit 1");
    QTest::newRow("another exit code") << QByteArray("exit 2");
    QTest::newRow("trouble on the way") << QByteArray("echo trouble >&2");
}

void SystemDesktop::failingToolIsNoAnswer()
{
    QFETCH(QByteArray, script);
    const QString tools = folder().path(QStringLiteral("tools"));
    QVERIFY(QDir().mkpath(tools));
    for (const QString& name : {QStringLiteral("xdotool"), QStringLiteral("xwininfo")}) {
        QFile tool(tools + QLatin1Char('/') + name);
        if (script.isEmpty())
            continue;
        QVERIFY(tool.open(QFile::WriteOnly));
        tool.write("#!/bin/sh\n" + script + "\n");
        tool.close();
        QVERIFY(tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    const Variable path("PATH", QFile::encodeName(tools));
    const QString anything = QStringLiteral("Quorvel");
    QVERIFY(!Desktop::windows(anything));
    QVERIFY(!Desktop::hasNoWindow(anything));
    QVERIFY(!Desktop::window(anything));
    QVERIFY(script == "echo trouble >&2" || !Desktop::trayIcons());
}

void SystemDesktop::missingSimulatorIsNoAnswer()
{
    QVERIFY(!simulator().openHandles());
    QVERIFY(!simulator().requests());
    QVERIFY(!simulator().packets());
    QVERIFY(!simulator().traceLines());
    QVERIFY(!simulator().takeTraceLines());
    QVERIFY(!simulator().clearTrace());

    QVERIFY(session().startSimulator());
    QCOMPARE(simulator().openHandles().value_or(-1), 0);
    QVERIFY(simulator().requests().has_value());
}

QUORVEL_TEST_MAIN(SystemDesktop)
#include "system_desktop_test.moc"
