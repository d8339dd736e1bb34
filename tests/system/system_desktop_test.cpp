#include "support/test_main.h"
#include "system/desktop/process_figures.h"
#include "system/desktop/simulator_tool.h"
#include "system/desktop/system_test.h"
#include "system/desktop/wait_until.h"

#include <QDir>
#include <QFile>
#include <QWidget>

#include <unistd.h>

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
    void windowsAreFound();
    void failingToolIsNoAnswer_data();
    void failingToolIsNoAnswer();
    void deadDisplayIsNoAnswer();
    void missingSimulatorIsNoAnswer();
    void processTableIsRead();
};

void SystemDesktop::windowsAreFound()
{
    const QString title = QStringLiteral("^Quorvel test window$");
    QVERIFY(Desktop::hasNoWindow(title));
    QVERIFY(!Desktop::window(title));
    QWidget window;
    window.setWindowTitle(QStringLiteral("Quorvel test window"));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(waitUntil([&] { return Desktop::window(title).has_value(); }));
    QVERIFY(!Desktop::hasNoWindow(title));
    QVERIFY(Desktop::trayIcons().has_value());
}

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

void SystemDesktop::deadDisplayIsNoAnswer()
{
    const Variable display("DISPLAY", ":4711");
    const QString anything = QStringLiteral("Quorvel");
    QVERIFY(!Desktop::windows(anything));
    QVERIFY(!Desktop::hasNoWindow(anything));
    QVERIFY(!Desktop::trayIcons());
    QVERIFY(!Desktop::clickAgain(QPoint(5, 5)));
}

void SystemDesktop::missingSimulatorIsNoAnswer()
{
    QVERIFY(!simulator().openHandles());
    QVERIFY(!simulator().mixerCell(0));
    QVERIFY(!simulator().requests());
    QVERIFY(!simulator().packets());
    QVERIFY(!simulator().traceLines());
    QVERIFY(!simulator().takeTraceLines());
    QVERIFY(!simulator().clearTrace());

    QVERIFY(session().startSimulator());
    QCOMPARE(simulator().openHandles().value_or(-1), 0);
    QVERIFY(simulator().requests().has_value());
}

void SystemDesktop::processTableIsRead()
{
    const auto before = ProcessFigures::of(getpid());
    QVERIFY(before.has_value());
    QVERIFY(before->threads > 0);
    QFile file(QStringLiteral("/dev/null"));
    QVERIFY(file.open(QFile::ReadOnly));
    for (int i = 0; i < 5; ++i)
        QThread::msleep(1);
    const auto after = ProcessFigures::of(getpid());
    QVERIFY(after.has_value());
    QCOMPARE(after->openFiles, before->openFiles + 1);
    QVERIFY2(after->wakeUps >= before->wakeUps + 5, qPrintable(QString::number(after->wakeUps)));
    QVERIFY(!ProcessFigures::of(0));
}

QUORVEL_TEST_MAIN(SystemDesktop)
#include "system_desktop_test.moc"
