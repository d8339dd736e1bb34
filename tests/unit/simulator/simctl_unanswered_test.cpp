#include "failing_simulator.h"
#include "support/simulated_interface.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

namespace {

struct Outcome
{
    int exitCode = -1;
    QString output;
    QString errors;
};

/// Runs the tool; `outputFile` gets its standard output when it is given.
Outcome simctl(const QString& words, const QString& outputFile = {})
{
    QProcess tool;
    if (!outputFile.isEmpty())
        tool.setStandardOutputFile(outputFile);
    tool.start(QCoreApplication::applicationDirPath() + "/quorvel-simctl", words.split(u' '));
    tool.waitForFinished();
    return {tool.exitStatus() == QProcess::NormalExit ? tool.exitCode() : -1,
            QString::fromUtf8(tool.readAllStandardOutput()),
            QString::fromUtf8(tool.readAllStandardError())};
}

} // namespace

/// The tool never shows an answer that it did not get, and its exit code tells.
class SimctlUnansweredTest : public QObject
{
    Q_OBJECT

private slots:
    void refusedCommandFails_data();
    void refusedCommandFails();
    void shortAnswerFails_data();
    void shortAnswerFails();
    void unwrittenAnswerFails_data();
    void unwrittenAnswerFails();
    void goneSimulatorIsNotReadAsZero();
};

void SimctlUnansweredTest::refusedCommandFails_data()
{
    QTest::addColumn<QString>("words");
    for (const char* words :
         {"reset", "plug ka1", "unplug", "fail any 1 31", "delay any 1 5", "short any 1 2",
          "clear-faults", "level 0 1", "levels-moving on", "errors 1", "firmware 1.0",
          "engine 48000 256 12", "trace", "trace --clear", "trace --with-time", "state", "mixer",
          "commands", "handles"})
        QTest::newRow(words) << words;
}

void SimctlUnansweredTest::refusedCommandFails()
{
    QFETCH(QString, words);
    const FailingSimulator simulator({31, 0, 0});
    const Outcome outcome = simctl(words);
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.errors, QString("quorvel-simctl: the simulator refused '%1' (error 31)\n")
                                 .arg(words.section(u' ', 0, 0)));
}

void SimctlUnansweredTest::shortAnswerFails_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<quint32>("length");
    QTest::newRow("no state") << "state" << 0u;
    QTest::newRow("half a state") << "state" << quint32{sizeof(SimState) - 1};
    QTest::newRow("no handles") << "handles" << 0u;
    QTest::newRow("half a mixer table") << "mixer" << SIM_MIXER_BYTES - 1;
    QTest::newRow("no trace") << "trace" << 0u;
    QTest::newRow("half a head") << "trace" << quint32{sizeof(SimTrace) - 1};
    QTest::newRow("fewer requests than counted") << "trace" << quint32{sizeof(SimTrace)};
}

void SimctlUnansweredTest::shortAnswerFails()
{
    QFETCH(QString, words);
    QFETCH(quint32, length);
    const FailingSimulator simulator({0, length, 1});
    const Outcome outcome = simctl(words);
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.errors,
             QString("quorvel-simctl: the simulator refused '%1' (error 122)\n").arg(words));
}

void SimctlUnansweredTest::unwrittenAnswerFails_data()
{
    QTest::addColumn<QString>("words");
    QTest::newRow("state") << "state";
    QTest::newRow("handles") << "handles";
}

void SimctlUnansweredTest::unwrittenAnswerFails()
{
    QFETCH(QString, words);
    const SimulatedInterface simulated;
    const Outcome outcome = simctl(words, "/dev/full");
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.errors,
             QString("quorvel-simctl: the answer to '%1' cannot be written\n").arg(words));
}

void SimctlUnansweredTest::goneSimulatorIsNotReadAsZero()
{
    SimulatedInterface simulated;
    simulated.host().stop();
    QVERIFY_THROWS_EXCEPTION(SimulatorReadError, simulated.openHandles());
    QCOMPARE(simulated.control().lastError(), SIM_ERROR_DEVICE_NOT_CONNECTED);
    QVERIFY_THROWS_EXCEPTION(SimulatorReadError, simulated.traceLines());
    QVERIFY_THROWS_EXCEPTION(SimulatorReadError, simulated.takeTrace());
    QVERIFY_THROWS_EXCEPTION(SimulatorReadError, simulated.control().mixerTable());
    QVERIFY_THROWS_EXCEPTION(SimulatorReadError, simulated.control().commands());
}

QUORVEL_TEST_MAIN(SimctlUnansweredTest)
#include "simctl_unanswered_test.moc"
