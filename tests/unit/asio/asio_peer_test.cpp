#include "pipe_peer.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <memory>
#include <thread>

namespace {

constexpr int patience = 20000; // ms

/// The tool, running or finished.
class Peer
{
public:
    explicit Peer(const QString& words)
    {
        process.start(QCoreApplication::applicationDirPath() + "/quorvel-asio-peer",
                      words.split(u' ', Qt::SkipEmptyParts));
    }

    /// The next line of its standard output.
    QString line()
    {
        while (!process.canReadLine() && process.waitForReadyRead(patience)) {
        }
        return QString::fromUtf8(process.readLine()).trimmed();
    }

    int exitCode()
    {
        process.waitForFinished(patience);
        return process.state() == QProcess::NotRunning &&
                       process.exitStatus() == QProcess::NormalExit
                   ? process.exitCode()
                   : -1;
    }

    QString errors() { return QString::fromUtf8(process.readAllStandardError()).remove(u'\r'); }

private:
    QProcess process;
};

} // namespace

class AsioPeerTest : public QObject
{
    Q_OBJECT

private slots:
    void help();
    void misuse_data();
    void misuse();
    void messages_data();
    void messages();
    void busyPanelIsAskedAgain();
    void absentPanel();
    void busyPanel();
    void panelThatDoesNotRead();
    void silentConnection();
    void waitResetReceives_data();
    void waitResetReceives();
    void waitResetGivesUp_data();
    void waitResetGivesUp();
    void clientsThatSendNothingDoNotCount();
    void resetPipeIsTaken();
    void holdBusy();
};

void AsioPeerTest::help()
{
    Peer peer("--help");
    QString text;
    for (QString line = peer.line(); !line.isEmpty() || text.isEmpty(); line = peer.line())
        text += line + '\n';
    QCOMPARE(peer.exitCode(), 0);
    QVERIFY(text.startsWith("Usage: quorvel-asio-peer COMMAND [WORDS]\n"));
}

void AsioPeerTest::misuse_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QString>("errors");
    const QString usage("quorvel-asio-peer: usage: ");
    QTest::newRow("nothing") << ""
                             << "quorvel-asio-peer: unknown command ''; try --help\n";
    QTest::newRow("unknown") << "dance"
                             << "quorvel-asio-peer: unknown command 'dance'; try --help\n";
    QTest::newRow("too many words") << "open-settings now" << usage + "open-settings \n";
    QTest::newRow("half a byte") << "send 3" << usage + "send [HEX...]\n";
    QTest::newRow("not hexadecimal") << "send 3g" << usage + "send [HEX...]\n";
    QTest::newRow("no time") << "connect" << usage + "connect MS\n";
    QTest::newRow("negative time") << "connect -1" << usage + "connect MS\n";
    QTest::newRow("time with a unit") << "wait-reset 3s" << usage + "wait-reset [SECONDS]\n";
    QTest::newRow("endless time") << "hold-busy 4294967295" << usage + "hold-busy SECONDS\n";
}

void AsioPeerTest::misuse()
{
    QFETCH(QString, words);
    QFETCH(QString, errors);
    Peer peer(words);
    QCOMPARE(peer.exitCode(), 2);
    QCOMPARE(peer.errors(), errors);
}

void AsioPeerTest::messages_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("open-settings")
        << "open-settings" << QByteArray::fromHex("0000000000000000000000000000000001000000");
    QTest::newRow("bytes") << "send 00 ff 7F31" << QByteArray::fromHex("00FF7F31");
    QTest::newRow("nothing") << "send" << QByteArray();
}

void AsioPeerTest::messages()
{
    QFETCH(QString, words);
    QFETCH(QByteArray, message);
    PipePeer::Server panel(PipePeer::settingsPipe);
    QCOMPARE(panel.error(), DWORD{ERROR_SUCCESS});
    Peer peer(words);
    QCOMPARE(panel.accept(), DWORD{ERROR_SUCCESS});
    const PipePeer::Reading reading = panel.read();
    QCOMPARE(reading.error, DWORD{ERROR_SUCCESS});
    QCOMPARE(reading.data, message);
    QCOMPARE(panel.disconnect(), DWORD{ERROR_SUCCESS});
    QCOMPARE(peer.exitCode(), 0);
    QCOMPARE(peer.errors(), QString());
}

void AsioPeerTest::busyPanelIsAskedAgain()
{
    PipePeer::Server panel(PipePeer::settingsPipe);
    PipePeer::Client other(PipePeer::settingsPipe);
    QCOMPARE(other.tryConnect(), DWORD{ERROR_SUCCESS});
    Peer peer("send 31");
    QTest::qSleep(300);
    QCOMPARE(panel.accept(), DWORD{ERROR_SUCCESS});
    QCOMPARE(panel.disconnect(), DWORD{ERROR_SUCCESS});
    QCOMPARE(panel.accept(), DWORD{ERROR_SUCCESS});
    QCOMPARE(panel.read().data, QByteArray("1"));
    QCOMPARE(panel.disconnect(), DWORD{ERROR_SUCCESS});
    QCOMPARE(peer.exitCode(), 0);
}

void AsioPeerTest::absentPanel()
{
    Peer peer("open-settings");
    QCOMPARE(peer.exitCode(), 1);
    QCOMPARE(peer.errors(), QString("quorvel-asio-peer: the panel's pipe is absent; is the panel "
                                    "running? (error 2)\n"));
}

void AsioPeerTest::busyPanel()
{
    const PipePeer::Server panel(PipePeer::settingsPipe);
    PipePeer::Client other(PipePeer::settingsPipe);
    QCOMPARE(other.tryConnect(), DWORD{ERROR_SUCCESS});
    Peer peer("connect 1");
    QCOMPARE(peer.exitCode(), 1);
    QCOMPARE(peer.errors(),
             QString("quorvel-asio-peer: the panel's pipe stays busy (error 231)\n"));
}

void AsioPeerTest::panelThatDoesNotRead()
{
    PipePeer::Server panel(PipePeer::settingsPipe);
    Peer peer("send 31");
    QCOMPARE(panel.accept(), DWORD{ERROR_SUCCESS});
    QCOMPARE(peer.exitCode(), 1);
    QCOMPARE(peer.errors(),
             QString("quorvel-asio-peer: the panel did not take the message (error 995)\n"));
}

void AsioPeerTest::silentConnection()
{
    PipePeer::Server panel(PipePeer::settingsPipe);
    QElapsedTimer timer;
    timer.start();
    Peer peer("connect 300");
    QCOMPARE(peer.line(), QString("connected"));
    QCOMPARE(panel.accept(), DWORD{ERROR_SUCCESS});
    const PipePeer::Reading reading = panel.read();
    QCOMPARE(reading.error, DWORD{ERROR_BROKEN_PIPE});
    QCOMPARE(reading.data, QByteArray());
    QVERIFY(timer.elapsed() >= 300);
    QCOMPARE(peer.exitCode(), 0);
}

void AsioPeerTest::waitResetReceives_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("line");
    QTest::newRow("the panel's byte") << QByteArray("1") << "received 0x31";
    QTest::newRow("several") << QByteArray("1\0\xAB", 3) << "received 0x31 0x00 0xAB";
    QTest::newRow("none") << QByteArray() << "received";
}

void AsioPeerTest::waitResetReceives()
{
    QFETCH(QByteArray, message);
    QFETCH(QString, line);
    Peer peer("wait-reset");
    QCOMPARE(peer.line(), QString("waiting"));
    PipePeer::Client panel(PipePeer::resetPipe);
    QCOMPARE(panel.tryConnect(), DWORD{ERROR_SUCCESS});
    QCOMPARE(panel.write(message), DWORD{ERROR_SUCCESS});
    QCOMPARE(peer.line(), line);
    QCOMPARE(peer.exitCode(), 0);
    QCOMPARE(peer.errors(), QString());
}

void AsioPeerTest::waitResetGivesUp_data()
{
    QTest::addColumn<bool>("silentClient");
    QTest::newRow("nobody connects") << false;
    QTest::newRow("a client stays silent") << true;
}

void AsioPeerTest::waitResetGivesUp()
{
    QFETCH(bool, silentClient);
    QElapsedTimer timer;
    timer.start();
    Peer peer("wait-reset 1");
    QCOMPARE(peer.line(), QString("waiting"));
    PipePeer::Client client(PipePeer::resetPipe);
    if (silentClient)
        QCOMPARE(client.tryConnect(), DWORD{ERROR_SUCCESS});
    QCOMPARE(peer.exitCode(), 1);
    QVERIFY(timer.elapsed() >= 990);
    QCOMPARE(peer.errors(),
             QString("quorvel-asio-peer: no reset request came in time (error 995)\n"));
}

void AsioPeerTest::clientsThatSendNothingDoNotCount()
{
    Peer peer("wait-reset");
    QCOMPARE(peer.line(), QString("waiting"));
    PipePeer::Client panel(PipePeer::resetPipe);
    for (int round = 0; round < 5; ++round) {
        QCOMPARE(panel.connect(), DWORD{ERROR_SUCCESS});
        panel.close();
    }
    QCOMPARE(panel.connect(), DWORD{ERROR_SUCCESS});
    QCOMPARE(panel.write("1"), DWORD{ERROR_SUCCESS});
    QCOMPARE(peer.line(), QString("received 0x31"));
    QCOMPARE(peer.exitCode(), 0);
}

void AsioPeerTest::resetPipeIsTaken()
{
    const PipePeer::Server owner(PipePeer::resetPipe);
    for (const char* words : {"wait-reset", "hold-busy 1"}) {
        Peer peer(words);
        QCOMPARE(peer.exitCode(), 1);
        QCOMPARE(peer.errors(),
                 QString("quorvel-asio-peer: cannot create the reset pipe (error 231)\n"));
    }
}

void AsioPeerTest::holdBusy()
{
    Peer peer("hold-busy 1");
    QCOMPARE(peer.line(), QString("busy"));
    PipePeer::Client panel(PipePeer::resetPipe);
    QCOMPARE(panel.tryConnect(), DWORD{ERROR_PIPE_BUSY});
    QCOMPARE(peer.exitCode(), 0);
    QCOMPARE(panel.tryConnect(), DWORD{ERROR_FILE_NOT_FOUND});
}

QUORVEL_TEST_MAIN(AsioPeerTest)
#include "asio_peer_test.moc"
