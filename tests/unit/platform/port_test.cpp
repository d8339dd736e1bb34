#include "platform/scoped_handle.h"
#include "platform/win32.h"
#include "port/device_wire.h"
#include "port/local_socket.h"
#include "support/test_main.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <bit>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/wait.h>
#include <thread>
#include <vector>

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

HANDLE openDevice()
{
    return CreateFileW(LR"(\\.\QuorvelAudioBus0)", GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
}

/// Answers all that comes with success and `claimed` bytes of which only four follow.
class FakeDevice
{
public:
    explicit FakeDevice(std::uint32_t claimed)
    {
        QDir().mkpath(runtimeFolder() + "/dev");
        listener = listenOnSocket((runtimeFolder() + "/dev/QuorvelAudioBus0").toStdString(), 0);
        server = std::thread([this, claimed] { serve(claimed); });
    }
    ~FakeDevice() { server.join(); }
    FakeDevice(const FakeDevice&) = delete;
    FakeDevice& operator=(const FakeDevice&) = delete;

private:
    void serve(std::uint32_t claimed)
    {
        pollfd watched = {listener.get(), POLLIN, 0};
        ::poll(&watched, 1, 5000);
        const FileDescriptor client = acceptSocket(listener.get());
        DeviceRequest request = {};
        std::vector<std::uint8_t> input(largestTransfer);
        while (receiveMessage(client.get(), &request, sizeof request, input.data(), input.size()) >
               0) {
            const bool reads = request.outputLength > 0;
            const DeviceAnswer answer = {0, reads ? claimed : 0};
            sendMessage(client.get(), &answer, sizeof answer, "abcd", reads ? 4 : 0);
        }
    }

    FileDescriptor listener;
    std::thread server;
};

DWORD request(HANDLE device, DWORD inputSize, DWORD outputSize, DWORD& returned)
{
    std::vector<char> input(inputSize);
    std::vector<char> output(outputSize);
    return DeviceIoControl(device, 0xFFDC2084, input.data(), inputSize, output.data(), outputSize,
                           &returned, nullptr) == FALSE
               ? GetLastError()
               : DWORD{ERROR_SUCCESS};
}

qsizetype openDescriptors()
{
    return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System | QDir::Dirs).size();
}

/// What the shell script writes into the file `result` beside it.
QString outputOfStarted(const QByteArray& script)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("script"));
    const bool written = file.open(QIODevice::WriteOnly) && file.write(script) == script.size();
    file.close();
    const QByteArray path = folder.path().toLocal8Bit();
    if (!written || std::bit_cast<std::uintptr_t>(
                        ShellExecuteA(nullptr, "open", "sh", "script", path, SW_SHOWNORMAL)) <= 32)
        return {};
    QFile result(folder.filePath("result"));
    return QTest::qWaitFor([&] { return result.exists(); }) && result.open(QIODevice::ReadOnly)
               ? QString::fromLocal8Bit(result.readAll())
               : QString();
}

} // namespace

/// What the port does with its folder, its descriptors and the programs it starts, none of which
/// shows in a Windows call's result.
class PortTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void deadSocketOfALivingNumber_data();
    void deadSocketOfALivingNumber();
    void strayFileIsRemoved();
    void probingDisturbsNobody();
    void nothingStaysBehind();
    void openFolderIsNotUsed();
    void namesStayInTheFolder_data();
    void namesStayInTheFolder();
    void tooLongPath();
    void deviceThatAnswersShort();
    void tooLargeRequest();
    void startedProgramIsOnItsOwn();
    void endedProgramLeavesNoZombie();
};

void PortTest::init()
{
    for (const char* part : {"/pipe", "/dev"})
        QDir(runtimeFolder() + part).removeRecursively();
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

void PortTest::nothingStaysBehind()
{
    const auto round = [] {
        const ScopedHandle pipe(createPipe(1));
        const ScopedHandle client(openPipe());
        QVERIFY(pipe.isValid() && client.isValid());
        ConnectNamedPipe(pipe.get(), nullptr);
        DisconnectNamedPipe(pipe.get());
        QCOMPARE(createPipe(1), INVALID_HANDLE_VALUE);
        QCOMPARE(openDevice(), INVALID_HANDLE_VALUE);
    };
    round();
    const qsizetype before = openDescriptors();
    for (int i = 0; i < 20; ++i)
        round();
    QCOMPARE(openDescriptors(), before);
    QCOMPARE(QDir(pipeFolder()).entryList(QDir::Files | QDir::System), QStringList{"lock"});
}

void PortTest::openFolderIsNotUsed()
{
    FakeDevice device(4);
    const ScopedHandle pipe(createPipe(1));
    const QFile::Permissions before = QFile::permissions(runtimeFolder());
    QVERIFY(QFile::setPermissions(runtimeFolder(), before | QFile::ExeOther));
    const HANDLE opened[] = {openDevice(), openPipe(), createPipe(PIPE_UNLIMITED_INSTANCES)};
    const DWORD error = GetLastError();
    QFile::setPermissions(runtimeFolder(), before);
    for (const HANDLE handle : opened)
        QCOMPARE(handle, INVALID_HANDLE_VALUE);
    QCOMPARE(error, DWORD{ERROR_ACCESS_DENIED});
    const ScopedHandle allowed(openDevice());
    QVERIFY(allowed.isValid());
}

void PortTest::namesStayInTheFolder_data()
{
    QTest::addColumn<QString>("path");
    for (const char* path :
         {R"(\\.\pipe\..)", R"(\\.\pipe\.)", R"(\\.\pipe\../dev)", R"(\\.\pipe\a\b)",
          R"(\\.\pipe\)", R"(\\.\pipe\a b)", R"(\\.\QuorvelLeftover)", R"(C:\QuorvelLeftover)", ""})
        QTest::newRow(path) << QString::fromLatin1(path);
}

void PortTest::namesStayInTheFolder()
{
    QFETCH(QString, path);
    const std::wstring name = path.toStdWString();
    QCOMPARE(
        CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE, 1, 1, 1, 0, nullptr),
        INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), DWORD{ERROR_INVALID_NAME});
    QCOMPARE(CreateFileW(name.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
             INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

void PortTest::tooLongPath()
{
    const std::wstring path = LR"(\\.\)" + std::wstring(150, L'x');
    QCOMPARE(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
             INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), DWORD{ERROR_FILENAME_EXCED_RANGE});
}

void PortTest::deviceThatAnswersShort()
{
    FakeDevice fake(100);
    const ScopedHandle device(openDevice());
    QVERIFY(device.isValid());
    DWORD returned = 77;
    QCOMPARE(request(device.get(), 0, 200, returned), DWORD{ERROR_DEVICE_NOT_CONNECTED});
    QCOMPARE(returned, 0U);
    // Nor may it store more than there is room for.
    QCOMPARE(request(device.get(), 0, 3, returned), DWORD{ERROR_DEVICE_NOT_CONNECTED});
}

void PortTest::tooLargeRequest()
{
    FakeDevice fake(4);
    const ScopedHandle device(openDevice());
    DWORD returned = 0;
    QCOMPARE(request(device.get(), largestTransfer + 1, 0, returned),
             DWORD{ERROR_NO_SYSTEM_RESOURCES});
    QCOMPARE(request(device.get(), 0, largestTransfer + 1, returned),
             DWORD{ERROR_NO_SYSTEM_RESOURCES});
    QCOMPARE(request(device.get(), largestTransfer, 4, returned), DWORD{ERROR_SUCCESS});
    QCOMPARE(returned, 4U);
}

void PortTest::startedProgramIsOnItsOwn()
{
    sigset_t blocked;
    sigset_t before;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const auto handler = ::signal(SIGUSR2, SIG_IGN);
    const QString text = outputOfStarted(R"(
streams=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2)
echo $streams > result.tmp
# By the shell alone: while it starts another program it blocks signals itself.
while read -r name set; do
    case $name in SigBlk:|SigIgn:) echo "$name $set" >> result.tmp;; esac
done < /proc/$$/status
[ $(cut -d ' ' -f 6 /proc/$$/stat) = $$ ] && echo own session >> result.tmp
mv result.tmp result
)");
    ::signal(SIGUSR2, handler);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    // The two signals above 31 are the thread library's own.
    const QRegularExpression expected("^/dev/null /dev/null /dev/null\n"
                                      "SigBlk: 0{16}\n"
                                      "SigIgn: [01]{8}[08]0{7}\n"
                                      "own session\n$");
    QVERIFY2(expected.match(text).hasMatch(), qPrintable(text));
}

void PortTest::endedProgramLeavesNoZombie()
{
    QCOMPARE(outputOfStarted("echo $$ > result.tmp; mv result.tmp result").isEmpty(), false);
    QTRY_COMPARE(::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT), -1);
    QCOMPARE(errno, ECHILD);
}

QUORVEL_TEST_MAIN(PortTest)
#include "port_test.moc"
