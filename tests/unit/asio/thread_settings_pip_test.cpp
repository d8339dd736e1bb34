#include "line_watch.h"
#include "pip_stage.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QTest>
#include <QtEndian>

#include <optional>
#include <thread>

namespace {

QByteArray fields(std::initializer_list<quint32> values)
{
    QByteArray message;
    for (const quint32 value : values) {
        const quint32 ordered = qToLittleEndian(value);
        message.append(reinterpret_cast<const char*>(&ordered), sizeof ordered);
    }
    return message;
}

/// So many bytes of 0x11, with bytes 16 to 19 as given.
QByteArray sized(int size, const QByteArray& openField)
{
    QByteArray message(qMax(size, 20), '\x11');
    message.replace(16, 4, openField);
    return message.left(size);
}

const QString openLine = QStringLiteral("Open Window Signal from ASIO.");

} // namespace

class ThreadSettingsPipTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { stage = std::make_unique<PipStage>(); }
    void cleanup() { stage.reset(); }

    void metaObject();
    void construction();
    void loop();
    void fieldsAreLogged();
    void messages_data();
    void messages();
    void tooLongMessage();
    void twentyClientsInARow();
    void pauseHasNoPipe();
    void clientOpensAndCloses();
    void clientGoneBeforeTheFirstPass();
    void silentClient();
    void pipeCouldNotBeCreated();

private:
    std::unique_ptr<PipStage> stage;
};

void ThreadSettingsPipTest::metaObject()
{
    const QMetaObject& meta = ThreadSettingsPip::staticMetaObject;
    QCOMPARE(meta.className(), "ThreadSettingsPip");
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    const QMetaMethod method = meta.method(meta.methodOffset());
    QCOMPARE(method.methodType(), QMetaMethod::Signal);
    QCOMPARE(method.methodSignature(), QByteArray("progressUpdated(int)"));
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
}

void ThreadSettingsPipTest::construction()
{
    stage->create();
    QCOMPARE(stage->log().take(),
             (QStringList{"Pipe created successfully.", "ThreadSettingsPip initialized."}));
    QVERIFY(!stage->thread->isRunning());
    PipePeer::Client client(PipePeer::settingsPipe);
    QCOMPARE(client.tryConnect(), DWORD{ERROR_SUCCESS});
}

void ThreadSettingsPipTest::loop()
{
    stage->create();
    stage->log().clear();
    stage->thread->start();
    QCOMPARE(stage->waitForLines(1), QStringList{PipStage::running});
    QTest::qWait(250);
    QCOMPARE(stage->log().take(), QStringList()); // It waits for a client.
    QVERIFY(PipStage::serve(fields({0, 0, 0, 0, 0})));
    QCOMPARE(stage->waitForPasses(1),
             (QStringList{"Received data from pipe: 0 0 0 0 0", PipStage::running}));
}

void ThreadSettingsPipTest::fieldsAreLogged()
{
    stage->start();
    QVERIFY(PipStage::serve(fields({1, 0x01020304, 4294967295U, 0x80000000U, 4294967295U})));
    QCOMPARE(stage->waitForPasses(1),
             (QStringList{"Received data from pipe: 1 16909060 4294967295 2147483648 4294967295",
                          openLine, PipStage::running}));
    QCOMPARE(stage->takeSignals(), QList<int>{1});
}

void ThreadSettingsPipTest::messages_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("values");
    QTest::addColumn<bool>("opens");
    const QByteArray zero(4, '\0');
    const QByteArray one("\1\0\0\0", 4);
    const QString four("286331153 286331153 286331153 286331153 ");
    QTest::newRow("0 bytes") << QByteArray() << "0 0 0 0 0" << false;
    QTest::newRow("1 byte") << QByteArray("\1") << "1 0 0 0 0" << false;
    QTest::newRow("15 bytes") << QByteArray(15, '\x11') << "286331153 286331153 286331153 1118481 0"
                              << false;
    QTest::newRow("16 bytes") << sized(16, one) << four + "0" << false;
    QTest::newRow("19 bytes, open field zero") << sized(19, zero) << four + "0" << false;
    QTest::newRow("19 bytes, open field set") << sized(19, one) << four + "1" << true;
    QTest::newRow("20 bytes, open field zero") << sized(20, zero) << four + "0" << false;
    QTest::newRow("20 bytes, open field set") << sized(20, one) << four + "1" << true;
    QTest::newRow("20 bytes, only the highest byte")
        << sized(20, QByteArray("\0\0\0\x80", 4)) << four + "2147483648" << true;
    QTest::newRow("21 bytes, open field zero") << sized(21, zero) << four + "0" << false;
    QTest::newRow("21 bytes, open field set") << sized(21, one) << four + "1" << true;
    QTest::newRow("1024 bytes, open field zero") << sized(1024, zero) << four + "0" << false;
    QTest::newRow("1024 bytes, open field set") << sized(1024, one) << four + "1" << true;
}

void ThreadSettingsPipTest::messages()
{
    QFETCH(QByteArray, message);
    QFETCH(QString, values);
    QFETCH(bool, opens);
    stage->start();
    // What an earlier message left behind must not count.
    QVERIFY(PipStage::serve(QByteArray(1024, '\xFF')));
    stage->waitForPasses(1);
    QCOMPARE(stage->takeSignals(), QList<int>{1});

    QVERIFY(PipStage::serve(message));
    QStringList expected{"Received data from pipe: " + values};
    if (opens)
        expected.append(openLine);
    expected.append(PipStage::running);
    QCOMPARE(stage->waitForPasses(1), expected);
    QCOMPARE(stage->takeSignals(), opens ? QList<int>{1} : QList<int>());
}

void ThreadSettingsPipTest::tooLongMessage()
{
    stage->start();
    for (const char fill : {'\0', '\xFF'}) {
        QVERIFY(PipStage::serve(QByteArray(1025, fill)));
        QCOMPARE(stage->waitForPasses(1), (QStringList{"Error reading from pipe. Error code: 234",
                                                       PipStage::nothing, PipStage::running}));
    }
    QCOMPARE(stage->takeSignals(), QList<int>());
    QVERIFY(PipStage::serve(fields({0, 0, 0, 0, 1})));
    QCOMPARE(stage->waitForPasses(1),
             (QStringList{"Received data from pipe: 0 0 0 0 1", openLine, PipStage::running}));
}

void ThreadSettingsPipTest::twentyClientsInARow()
{
    constexpr int clients = 20;
    constexpr qint64 pause = 100; // ms
    stage->start();
    QElapsedTimer timer;
    timer.start();
    QStringList expected;
    for (quint32 i = 0; i < clients; ++i) {
        QVERIFY(PipStage::serve(fields({i, 0, 0, 0, i % 2})));
        expected.append(QString("Received data from pipe: %1 0 0 0 %2").arg(i).arg(i % 2));
        if (i % 2 != 0)
            expected.append(openLine);
        expected.append(PipStage::running);
    }
    const qint64 elapsed = timer.elapsed();
    QCOMPARE(stage->waitForPasses(clients), expected);
    QCOMPARE(stage->takeSignals(), QList<int>(clients / 2, 1));
    // The clock of the sleep may be up to a millisecond off.
    QVERIFY2(elapsed >= (clients - 1) * (pause - 1), qPrintable(QString::number(elapsed)));
}

void ThreadSettingsPipTest::pauseHasNoPipe()
{
    stage->start();
    QVERIFY(PipStage::serve("x"));
    PipePeer::Client early(PipePeer::settingsPipe);
    QCOMPARE(early.tryConnect(), DWORD{ERROR_PIPE_BUSY});
    QCOMPARE(early.connect(), DWORD{ERROR_SUCCESS});
}

void ThreadSettingsPipTest::clientOpensAndCloses()
{
    stage->start();
    QVERIFY(PipStage::serve("x"));
    stage->waitForPasses(1);
    for (int round = 0; round < 3; ++round) {
        PipePeer::Client client(PipePeer::settingsPipe);
        // Gets in only when the thread waits, since it has parted with the client before.
        QCOMPARE(client.connect(), DWORD{ERROR_SUCCESS});
        client.close();
        QCOMPARE(stage->waitForPasses(1), (QStringList{"Error reading from pipe. Error code: 109",
                                                       PipStage::nothing, PipStage::running}));
    }
    QVERIFY(PipStage::serve(fields({7, 0, 0, 0, 1})));
    QCOMPARE(stage->waitForPasses(1),
             (QStringList{"Received data from pipe: 7 0 0 0 1", openLine, PipStage::running}));
    QCOMPARE(stage->takeSignals(), QList<int>{1});
}

void ThreadSettingsPipTest::clientGoneBeforeTheFirstPass()
{
    stage->create();
    PipePeer::Client client(PipePeer::settingsPipe);
    QCOMPARE(client.tryConnect(), DWORD{ERROR_SUCCESS});
    client.close();
    stage->log().clear();
    stage->thread->start();
    QCOMPARE(stage->waitForPasses(2),
             (QStringList{PipStage::running, "Error connecting to pipe. Error code: 232",
                          PipStage::nothing, PipStage::running}));
    QVERIFY(PipStage::serve(fields({0, 0, 0, 0, 1})));
    QCOMPARE(stage->waitForPasses(1),
             (QStringList{"Received data from pipe: 0 0 0 0 1", openLine, PipStage::running}));
}

void ThreadSettingsPipTest::silentClient()
{
    stage->start();
    PipePeer::Client silent(PipePeer::settingsPipe);
    QCOMPARE(silent.connect(), DWORD{ERROR_SUCCESS});
    QTest::qWait(300);
    QCOMPARE(stage->log().take(), QStringList());
    PipePeer::Client other(PipePeer::settingsPipe);
    QCOMPARE(other.tryConnect(), DWORD{ERROR_PIPE_BUSY});
    QCOMPARE(silent.write(fields({0, 0, 0, 0, 1})), DWORD{ERROR_SUCCESS});
    QCOMPARE(stage->waitForPasses(1),
             (QStringList{"Received data from pipe: 0 0 0 0 1", openLine, PipStage::running}));
}

void ThreadSettingsPipTest::pipeCouldNotBeCreated()
{
    const PipePeer::Server owner(PipePeer::settingsPipe);
    stage->create();
    QCOMPARE(stage->log().take(),
             (QStringList{"Error: Could not create pipe. Error code: 231",
                          "Failed to create named pipe in ThreadSettingsPip."}));
    QElapsedTimer timer;
    timer.start();
    qint64 last = -1;
    qint64 shortest = 1000;
    std::optional<LineWatch> watch;
    watch.emplace(PipStage::running, [&] {
        const qint64 now = timer.elapsed();
        if (last >= 0)
            shortest = qMin(shortest, now - last);
        last = now;
    });
    stage->thread->start();
    const QStringList lines = stage->waitForPasses(10);
    stage->thread.reset();
    watch.reset();
    QVERIFY2(shortest >= 99, qPrintable(QString::number(shortest)));
    QVERIFY(lines.count(PipStage::running) >= 10);
    const QStringList pass{PipStage::running, "Error connecting to pipe. Error code: 6",
                           PipStage::nothing};
    for (qsizetype i = 0; i < lines.size(); ++i)
        QCOMPARE(lines[i], pass[i % 3]);
}

QUORVEL_TEST_MAIN(ThreadSettingsPipTest)
#include "thread_settings_pip_test.moc"
