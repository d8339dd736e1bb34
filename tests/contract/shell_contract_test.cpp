#include "platform/win32.h"
#include "support/simulated_interface.h"
#include "support/test_main.h"
#include "support/try_compare.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTest>

namespace {

quintptr shellExecute(const QByteArray& file, const char* parameters)
{
    return reinterpret_cast<quintptr>(
        ShellExecuteA(nullptr, "open", file.constData(), parameters, nullptr, SW_SHOWNORMAL));
}

} // namespace

class ShellContractTest : public QObject
{
    Q_OBJECT

private slots:
    void absentProgramIsNotFound();
    void programIsFoundInThePath();
    void programIsStartedByItsPath();
    void sleepTakesItsTime();
};

void ShellContractTest::absentProgramIsNotFound()
{
    QCOMPARE(shellExecute("quorvel-no-such-program.exe", "mmsys.cpl"), quintptr{2});
    QCOMPARE(shellExecute("quorvel-no-such-program.exe", nullptr), quintptr{2});
}

void ShellContractTest::programIsFoundInThePath()
{
    SimulatedInterface simulated;
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QDir::toNativeSeparators(QCoreApplication::applicationDirPath()).toLocal8Bit() +
                        QDir::listSeparator().toLatin1() + path);
    const quintptr result = shellExecute("quorvel-simctl", "plug ks  7");
    qputenv("PATH", path);
    QVERIFY(result > 32);
    QUORVEL_TRY_COMPARE(simulated.control().state().plugged, 1u);
    QCOMPARE(simulated.control().state().productId, 15u);
    QCOMPARE(simulated.control().state().bus, 7u);
}

void ShellContractTest::programIsStartedByItsPath()
{
    SimulatedInterface simulated;
    const QByteArray file =
        QDir::toNativeSeparators(QCoreApplication::applicationDirPath() + "/quorvel-simctl")
            .toLocal8Bit();
    QVERIFY(shellExecute(file, "errors 12") > 32);
    QUORVEL_TRY_COMPARE(simulated.control().state().usbStatus.errorCount, 12u);
}

void ShellContractTest::sleepTakesItsTime()
{
    QElapsedTimer clock;
    clock.start();
    Sleep(60);
    QVERIFY2(clock.elapsed() >= 55, qPrintable(QString::number(clock.elapsed())));
}

QUORVEL_TEST_MAIN(ShellContractTest)
#include "shell_contract_test.moc"
