#include "platform/win32.h"
#include "support/simulated_interface.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <array>
#include <memory>

namespace {

struct Outcome
{
    int exitCode = -1;
    QString output;
    QString errors;
};

Outcome simctl(const QString& words)
{
    QProcess tool;
    tool.start(QCoreApplication::applicationDirPath() + "/quorvel-simctl",
               words.split(u' ', Qt::SkipEmptyParts));
    tool.waitForFinished();
    return {tool.exitStatus() == QProcess::NormalExit ? tool.exitCode() : -1,
            QString::fromUtf8(tool.readAllStandardOutput()).remove(u'\r'),
            QString::fromUtf8(tool.readAllStandardError()).remove(u'\r')};
}

DWORD request(HANDLE device, DWORD code, const void* input = nullptr, std::size_t length = 0,
              void* output = nullptr, DWORD room = 0)
{
    DWORD returned = 0;
    return DeviceIoControl(device, code, const_cast<void*>(input), static_cast<DWORD>(length),
                           output, room, &returned, nullptr) == FALSE
               ? GetLastError()
               : 0;
}

} // namespace

class SimctlTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void helpNamesEveryCommand();
    void badWordsAreMisuse_data();
    void badWordsAreMisuse();
    void refusalIsReported();
    void commandsReachTheInterface();
    void faultsReachTheInterface();
    void traceIsText();
    void traceIsClearedOnDemand();
    void stateIsText();
    void mixerAndCommandsAreText();
    void gainsHaveSixDigits_data();
    void gainsHaveSixDigits();
    void longInputIsCutShort();
    void lostCellsAreTold();

private:
    HANDLE openDevice();

    std::unique_ptr<SimulatedInterface> simulated;
    HANDLE device = INVALID_HANDLE_VALUE;
};

void SimctlTest::init()
{
    simulated = std::make_unique<SimulatedInterface>();
}

void SimctlTest::cleanup()
{
    if (device != INVALID_HANDLE_VALUE)
        CloseHandle(device);
    device = INVALID_HANDLE_VALUE;
    simulated.reset();
}

HANDLE SimctlTest::openDevice()
{
    device = CreateFileW(LR"(\\.\QuorvelAudioBus0)", GENERIC_READ | GENERIC_WRITE,
                         FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    return device;
}

void SimctlTest::helpNamesEveryCommand()
{
    const Outcome help = simctl("--help");
    QCOMPARE(help.exitCode, 0);
    for (const char* command : {"reset", "plug", "unplug", "fail", "delay", "short", "clear-faults",
                                "level", "levels-moving", "errors", "firmware", "engine", "trace",
                                "state", "mixer", "commands", "handles"})
        QVERIFY2(help.output.contains(QString("\n  %1 ").arg(command)), command);
}

void SimctlTest::badWordsAreMisuse_data()
{
    QTest::addColumn<QString>("words");
    for (const char* words : {"",
                              "jump",
                              "plug",
                              "plug ka3",
                              "plug ka1 x",
                              "plug ka1 1 2",
                              "unplug now",
                              "fail any 1",
                              "fail xyz 1 2",
                              "fail any -1 2",
                              "fail any 1 2 3 4",
                              "delay any 1 1s",
                              "level 0",
                              "level 0 1.5",
                              "level 0 2147483648",
                              "levels-moving maybe",
                              "errors 4294967296",
                              "firmware 12345678901",
                              "engine 1 2",
                              "trace --all",
                              "trace --clear --clear"})
        QTest::newRow(words) << words;
}

void SimctlTest::badWordsAreMisuse()
{
    QFETCH(QString, words);
    const Outcome outcome = simctl(words);
    QCOMPARE(outcome.exitCode, 2);
    QVERIFY2(outcome.errors.startsWith("quorvel-simctl: "), qPrintable(outcome.errors));
    QCOMPARE(outcome.output, QString());
    QVERIFY(!simulated->control().state().plugged);
}

void SimctlTest::refusalIsReported()
{
    const Outcome badBus = simctl("plug ka1 16");
    QCOMPARE(badBus.exitCode, 1);
    QCOMPARE(badBus.errors, QString("quorvel-simctl: the simulator refused 'plug' (error 87)\n"));
    QCOMPARE(simctl("level 192 0").exitCode, 1);
}

void SimctlTest::commandsReachTheInterface()
{
    QCOMPARE(simctl("plug ks 5").exitCode, 0);
    QCOMPARE(simctl("errors 77").exitCode, 0);
    QCOMPARE(simctl("firmware 2.1").exitCode, 0);
    QCOMPARE(simctl("engine 48000 0x100 12").exitCode, 0);
    QCOMPARE(simctl("levels-moving on").exitCode, 0);
    SimulatedState state = simulated->control().state();
    QCOMPARE(state.plugged, 1u);
    QCOMPARE(state.productId, 15u);
    QCOMPARE(state.bus, 5u);
    QCOMPARE(state.usbStatus.errorCount, 77u);
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(state.firmware), 5),
             QByteArray("2.1\0\0", 5));
    QCOMPARE(state.engine.sampleRate, 48000u);
    QCOMPARE(state.engine.bufferSize, 256u);
    QCOMPARE(state.engine.usbLatency, 12u);
    QCOMPARE(state.levelsMove, std::uint8_t{1});

    QCOMPARE(simctl("plug 0xFFFFFFFF").exitCode, 0);
    QCOMPARE(simctl("levels-moving off").exitCode, 0);
    QCOMPARE(simctl("level 3 -1000").exitCode, 0);
    std::array<std::int32_t, 192> levels = {};
    QCOMPARE(request(openDevice(), 0xFFDC2074, nullptr, 0, levels.data(), 768), 0u);
    QCOMPARE(levels[3], -1000);
    QCOMPARE(simulated->control().state().productId, 0xFFFFFFFFu);
    QCOMPARE(simctl("unplug").exitCode, 0);
    QVERIFY(!simulated->control().state().plugged);
    QCOMPARE(simctl("reset").exitCode, 0);
    QCOMPARE(simulated->control().state().usbStatus.errorCount, 0u);
}

void SimctlTest::faultsReachTheInterface()
{
    QCOMPARE(simctl("plug ka1").exitCode, 0);
    openDevice();
    QCOMPARE(simctl("fail FFDC2078 1 31 1").exitCode, 0);
    QCOMPARE(request(device, 0xFFDC2078), 0u);
    QCOMPARE(request(device, 0xFFDC2078), DWORD{31});
    QCOMPARE(request(device, 0xFFDC2078), 0u);
    QCOMPARE(simctl("fail any forever 5").exitCode, 0);
    QCOMPARE(request(device, 0xFFDC2078), DWORD{5});
    QCOMPARE(simctl("clear-faults").exitCode, 0);
    QCOMPARE(request(device, 0xFFDC2078), 0u);
    QCOMPARE(simctl("short 0xFFDC2084 1 2").exitCode, 0);
    std::uint32_t product = 0;
    QCOMPARE(request(device, 0xFFDC2084, nullptr, 0, &product, 4), 0u);
    QCOMPARE(simulated->control().trace().back().returned, 2u);
    QCOMPARE(simctl("delay any 1 0").exitCode, 0);
}

void SimctlTest::traceIsText()
{
    QCOMPARE(simctl("plug ka2").exitCode, 0);
    openDevice();
    const std::uint32_t rate = 44100;
    request(device, 0xFFDC2038, &rate, 4);
    std::uint32_t product = 0;
    request(device, 0xFFDC2084, nullptr, 0, &product, 4);
    request(device, 0xFFDC2999);
    std::vector<double> table(8288);
    table[128] = 1;
    table[161] = 1;
    table[8192] = 0.50118723362727224;
    request(device, 0xFFDC2040, table.data(), 66304);
    table[161] = 0;
    simulated->control().fail(0xFFDC2040, 1, 31);
    request(device, 0xFFDC2040, table.data(), 66304);
    const QStringList expected = {
        "h1 FFDC2038 in=44 AC 00 00 out=0", "h1 FFDC2084 in= out=4",
        "h1 FFDC2999 in= out=0 error=1",    "h1 FFDC2040 table 128=1 161=1 8192=0.501187",
        "h1 FFDC2040 table 161=0 error=31",
    };
    QCOMPARE(simulated->traceLines(), expected);
    QCOMPARE(simctl("trace").output, expected.join(u'\n') + u'\n');
}

void SimctlTest::traceIsClearedOnDemand()
{
    QCOMPARE(simctl("plug ka2").exitCode, 0);
    openDevice();
    request(device, 0xFFDC2078);
    const QString timed = simctl("trace --with-time").output;
    QVERIFY2(QRegularExpression(R"(^\d+ ms h1 FFDC2078 in= out=0\n$)").match(timed).hasMatch(),
             qPrintable(timed));
    QCOMPARE(simctl("trace --clear").output, QString("h1 FFDC2078 in= out=0\n"));
    QCOMPARE(simctl("trace").output, QString());
    request(device, 0xFFDC2080);
    QCOMPARE(simulated->takeTrace(), QStringList("h1 FFDC2080 in= out=0"));
    QCOMPARE(simulated->takeTrace(), QStringList());
}

void SimctlTest::stateIsText()
{
    QVERIFY(simctl("state").output.startsWith("plugged: no\nopen handles: 0\n"));
    QCOMPARE(simctl("plug ka2 3").exitCode, 0);
    QCOMPARE(simctl("handles").output, QString("0\n"));
    const QString text = simctl("state").output;
    QVERIFY2(text.startsWith("plugged: product id 2 at bus 3\n"), qPrintable(text));
    for (const char* line :
         {"firmware: 1.0.7", "engine: running", "sample rate: 44100 Hz", "buffer size: 192 samples",
          "USB latency: 24 frames", "slow mode: off", "phone chip: off", "requests: 0"})
        QVERIFY2(text.contains(QString("\n%1\n").arg(line)), line);
    QVERIFY(simulated->control().setFirmware({'v', 1, 0, 200, 'x'}));
    QVERIFY(simctl("state").output.contains("\nfirmware: v\\x01\\x00\\xC8x\n"));
}

void SimctlTest::mixerAndCommandsAreText()
{
    QCOMPARE(simctl("plug ka2").exitCode, 0);
    openDevice();
    std::vector<double> table(8288);
    table[2050] = 1.9952623149688795;
    request(device, 0xFFDC2040, table.data(), 66304);
    const std::array<std::uint8_t, 37> packet = {1, 0x07, 0, 2, 1, 0x2C, 1};
    request(device, 0xFFDC209C, packet.data(), packet.size());
    request(device, 0xFFDC209C, packet.data(), packet.size());
    QCOMPARE(simctl("mixer").output, QString("2050=1.99526\n"));
    QCOMPARE(simctl("commands").output, QString("2x 01 07 00 02 01 2C 01\n"));
    QCOMPARE(simctl("handles").output, QString("1\n"));
}

void SimctlTest::gainsHaveSixDigits_data()
{
    QTest::addColumn<double>("gain");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0 << "0";
    QTest::newRow("one") << 1.0 << "1";
    QTest::newRow("six digits") << 0.50118723362727224 << "0.501187";
    QTest::newRow("small") << 0.000112201845430196 << "0.000112202";
    QTest::newRow("tiny") << 1e-7 << "1e-07";
    QTest::newRow("negative") << -2.5 << "-2.5";
}

void SimctlTest::gainsHaveSixDigits()
{
    QFETCH(double, gain);
    QFETCH(QString, text);
    QCOMPARE(QString::fromStdString(formatGain(gain)), text);
}

void SimctlTest::longInputIsCutShort()
{
    SimulatedRequest request;
    request.handle = 12;
    request.code = 0x209C;
    request.inputLength = 41;
    request.input.assign(40, 0x0A);
    QCOMPARE(QString::fromStdString(formatRequest(request)),
             "h12 0000209C in=" + QString("0A ").repeated(40) + ".. (41 bytes) out=0");
    request.inputLength = 40;
    QCOMPARE(QString::fromStdString(formatRequest(request)),
             "h12 0000209C in=" + QString("0A ").repeated(40) + "out=0");
}

void SimctlTest::lostCellsAreTold()
{
    SimulatedRequest request;
    request.handle = 1;
    request.code = 0xFFDC2040;
    request.mixerTable = true;
    request.cellsLost = true;
    request.cells = {{9, 0.25}};
    QCOMPARE(QString::fromStdString(formatRequest(request)),
             QString("h1 FFDC2040 table (cells lost) 9=0.25"));
}

QUORVEL_TEST_MAIN(SimctlTest)
#include "simctl_test.moc"
