#include "platform/win32.h"
#include "simulator/client/simulator_control.h"
#include "support/simulated_interface.h"
#include "support/simulator_host.h"
#include "support/test_main.h"
#include "support/try_compare.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <future>
#include <sys/wait.h>
#include <unistd.h>

namespace {

QString hostProgram()
{
    return QCoreApplication::applicationDirPath() + "/quorvel-simulator";
}

/// A simulator that the test starts with options of its own.
class HostProcess
{
public:
    explicit HostProcess(const QStringList& options)
    {
        process.start(hostProgram(), options);
        process.waitForReadyRead();
    }
    ~HostProcess()
    {
        process.kill();
        process.waitForFinished();
    }

    bool isReady() { return process.readLine() == "ready\n"; }

    QProcess process;
};

HANDLE openDevice(const wchar_t* path)
{
    return CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                       nullptr, OPEN_EXISTING, 0, nullptr);
}

DWORD readNumber(HANDLE device, DWORD code, std::uint32_t& value)
{
    DWORD returned = 0;
    return DeviceIoControl(device, code, nullptr, 0, &value, sizeof value, &returned, nullptr) ==
                   FALSE
               ? GetLastError()
               : 0;
}

QStringList sockets()
{
    return QDir(qEnvironmentVariable("QUORVEL_RUNTIME_DIR") + "/dev")
        .entryList(QDir::System | QDir::Files);
}

} // namespace

/// What happens around the native host when processes end. What it answers is in the contract.
class SimulatorHostTest : public QObject
{
    Q_OBJECT

private slots:
    void stopsWhenItsInputCloses();
    void secondHostIsRefused();
    void crashedHostIsSucceeded();
    void handleOutlivesItsHost();
    void crashedProgramLosesItsHandles();
    void stoppedHostHoldsUpNoClosing();
};

void SimulatorHostTest::stopsWhenItsInputCloses()
{
    HostProcess host({"--until-stdin-closes"});
    QVERIFY(host.isReady());
    host.process.closeWriteChannel();
    QVERIFY(host.process.waitForFinished());
    QCOMPARE(host.process.exitCode(), 0);
}

void SimulatorHostTest::secondHostIsRefused()
{
    HostProcess host({"--model", "ka1"});
    QVERIFY(host.isReady());
    QProcess second;
    second.start(hostProgram(), QStringList());
    QVERIFY(second.waitForFinished());
    QCOMPARE(second.exitCode(), 1);
    QVERIFY(second.readAllStandardError().contains("another simulator already serves"));
    const HANDLE device = openDevice(LR"(\\.\QuorvelAudioBus0)");
    QVERIFY(device != INVALID_HANDLE_VALUE);
    CloseHandle(device);
}

void SimulatorHostTest::crashedHostIsSucceeded()
{
    {
        HostProcess host({"--model", "ka1", "--bus", "2"});
        QVERIFY(host.isReady());
    } // Killed: its sockets stay.
    QCOMPARE(sockets().size(), 2);
    QCOMPARE(openDevice(LR"(\\.\QuorvelAudioBus2)"), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    HostProcess next({"--model", "ka2", "--bus", "3"});
    QVERIFY(next.isReady());
    QCOMPARE(sockets(), QStringList({"QuorvelAudioBus3", "QuorvelSimulator"}));
}

void SimulatorHostTest::handleOutlivesItsHost()
{
    SimulatedInterface simulated;
    QVERIFY(simulated.control().plug(SimulatorControl::ka1));
    const HANDLE device = openDevice(LR"(\\.\QuorvelAudioBus0)");
    std::uint32_t product = 0;
    QCOMPARE(readNumber(device, 0xFFDC2084, product), DWORD{0});
    simulated.host().stop();
    QCOMPARE(readNumber(device, 0xFFDC2084, product), DWORD{ERROR_DEVICE_NOT_CONNECTED});
    QCOMPARE(readNumber(device, 0xFFDC2084, product), DWORD{ERROR_DEVICE_NOT_CONNECTED});
    QCOMPARE(openDevice(LR"(\\.\QuorvelAudioBus0)"), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    QCOMPARE(simulated.host().start(), QString());
    QCOMPARE(readNumber(device, 0xFFDC2084, product), DWORD{ERROR_DEVICE_NOT_CONNECTED});
    QVERIFY(CloseHandle(device));
}

void SimulatorHostTest::crashedProgramLosesItsHandles()
{
    SimulatedInterface simulated;
    QVERIFY(simulated.control().plug(SimulatorControl::ka1));
    QVERIFY(simulated.control().delay(SimulatorControl::anyCode, SimulatorControl::always, 60000));
    // A program that dies while its request is being held back.
    const pid_t child = ::fork();
    if (child == 0) {
        std::uint32_t product = 0;
        readNumber(openDevice(LR"(\\.\QuorvelAudioBus0)"), 0xFFDC2084, product);
        ::_exit(0);
    }
    QUORVEL_TRY_COMPARE(simulated.control().state().requests, 1u);
    QCOMPARE(simulated.openHandles(), 1);
    QCOMPARE(::kill(child, SIGKILL), 0);
    QCOMPARE(::waitpid(child, nullptr, 0), child);
    QUORVEL_TRY_COMPARE(simulated.openHandles(), 0);
}

void SimulatorHostTest::stoppedHostHoldsUpNoClosing()
{
    HostProcess host({"--model", "ka1"});
    QVERIFY(host.isReady());
    SimulatorControl control;
    QVERIFY(control.open());
    const HANDLE device = openDevice(LR"(\\.\QuorvelAudioBus0)");
    QCOMPARE(control.state().openHandles, 1u);
    const auto pid = static_cast<pid_t>(host.process.processId());
    QCOMPARE(::kill(pid, SIGSTOP), 0);
    std::future<BOOL> closing = std::async(std::launch::async, [=] { return CloseHandle(device); });
    const std::future_status status = closing.wait_for(std::chrono::seconds(30));
    QCOMPARE(::kill(pid, SIGCONT), 0);
    QVERIFY(closing.get());
    QVERIFY(status == std::future_status::ready);
    QUORVEL_TRY_COMPARE(control.state().openHandles, 0u);
}

QUORVEL_TEST_MAIN(SimulatorHostTest)
#include "simulator_host_test.moc"
