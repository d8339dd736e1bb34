#include "asio/scoped_handle.h"
#include "platform/port/local_socket.h"
#include "platform/win32.h"
#include "support/test_main.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

namespace {

constexpr const wchar_t* pipePath = LR"(\\.\pipe\QuorvelLeftover)";

QString runtimeFolder()
{
    return qEnvironmentVariable("QUORVEL_RUNTIME_DIR");
}

QString pipeFolder()
{
    return runtimeFolder() + "/pipe/QuorvelLeftover";
}

HANDLE createPipe(DWORD mostInstances)
{
    return CreateNamedPipeW(pipePath, PIPE_ACCESS_DUPLEX,
                            PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, mostInstances,
                            4096, 4096, 0, nullptr);
}

HANDLE openPipe()
{
    return CreateFileW(pipePath, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                       nullptr);
}

} // namespace

/// What processes that were killed leave in the runtime folder, and who may look into it.
class PortTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void deadSocketOfALivingNumber_data();
    void deadSocketOfALivingNumber();
    void strayFileIsRemoved();
    void probingDisturbsNobody();
};

void PortTest::init()
{
    QDir(runtimeFolder() + "/pipe").removeRecursively();
}

void PortTest::deadSocketOfALivingNumber_data()
{
    QTest::addColumn<QString>("name");
    // The number of a process says nothing: this one and the first one live.
    QTest::newRow("our own") << QString("%1-999-1").arg(QCoreApplication::applicationPid());
    QTest::newRow("of another process") << QString("1-1-1");
}

void PortTest::deadSocketOfALivingNumber()
{
    QFETCH(QString, name);
    const QString file = pipeFolder() + '/' + name;
    QVERIFY(QDir().mkpath(pipeFolder()));
    listenOnSocket(file.toStdString(), 0);
    QVERIFY(QFileInfo::exists(file));

    const ScopedHandle pipe(createPipe(PIPE_UNLIMITED_INSTANCES));
    QVERIFY2(pipe.isValid(), "the dead one's limit counts");
    QVERIFY(!QFileInfo::exists(file));
    const ScopedHandle second(createPipe(PIPE_UNLIMITED_INSTANCES));
    QVERIFY(second.isValid());
}

void PortTest::strayFileIsRemoved()
{
    QVERIFY(QDir().mkpath(pipeFolder()));
    QFile stray(pipeFolder() + "/1-1-1");
    QVERIFY(stray.open(QIODevice::WriteOnly));
    const ScopedHandle pipe(createPipe(1));
    QVERIFY(pipe.isValid());
    QVERIFY(!stray.exists());
}

void PortTest::probingDisturbsNobody()
{
    const ScopedHandle pipe(createPipe(1));
    QVERIFY(pipe.isValid());
    for (int attempt = 0; attempt < 3; ++attempt) {
        QCOMPARE(createPipe(1), INVALID_HANDLE_VALUE);
        QCOMPARE(GetLastError(), DWORD{ERROR_PIPE_BUSY});
    }
    const ScopedHandle client(openPipe());
    QVERIFY(client.isValid());
    QCOMPARE(ConnectNamedPipe(pipe.get(), nullptr), FALSE);
    QCOMPARE(GetLastError(), DWORD{ERROR_PIPE_CONNECTED});
}

QUORVEL_TEST_MAIN(PortTest)
#include "port_test.moc"
