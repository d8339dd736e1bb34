#include "platform/scoped_handle.h"
#include "platform/win32.h"
#include "port/device_wire.h"
#include "port/local_socket.h"
#include "port/pipe_stream.h"
#include "support/test_main.h"
#include "support/try_compare.h"
#include "support/waiting_thread.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <bit>
#include <cerrno>
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

/// What lies in the folders of the pipes.
QStringList files()
{
    QStringList result;
    for (const QString part : {"/pipe", "/lock"})
        result += QDir(runtimeFolder() + part).entryList(QDir::Files | QDir::System);
    return result;
}

HANDLE createPipe(DWORD bufferSize = 4096)
{
    return CreateNamedPipeW(pipePath, PIPE_ACCESS_DUPLEX,
                            PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, 1, bufferSize,
                            bufferSize, 0, nullptr);
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

/// Serves the device in the port's own messages.
class FakeDevice
{
public:
    FakeDevice()
    {
        QDir().mkpath(runtimeFolder() + "/dev");
        listener = listenOnSocket((runtimeFolder() + "/dev/QuorvelAudioBus0").toStdString());
    }

    /// Waits for the next request, of the first handle that was opened.
    DeviceRequest receive()
    {
        if (!client.isValid())
            client = acceptSocket(listener.get());
        pollfd watched = {client.get(), POLLIN, 0};
        ::poll(&watched, 1, -1);
        DeviceRequest request = {};
        std::vector<std::uint8_t> input(largestTransfer);
        receiveMessage(client.get(), &request, sizeof request, input.data(), input.size());
        return request;
    }

    /// Answers with so many bytes; `claimed` says how many there should be.
    void answer(const DeviceRequest& request, std::uint32_t claimed, std::uint32_t sent) const
    {
        const DeviceAnswer answer = {request.number, 0, claimed};
        sendMessage(client.get(), &answer, sizeof answer, "abcdefgh", sent);
    }

private:
    FileDescriptor listener;
    FileDescriptor client;
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

/// The same while the device answers.
DWORD answeredRequest(FakeDevice& fake, HANDLE device, DWORD inputSize, DWORD outputSize,
                      std::uint32_t claimed, DWORD& returned)
{
    std::thread server([&] { fake.answer(fake.receive(), claimed, 4); });
    const DWORD error = request(device, inputSize, outputSize, returned);
    server.join();
    return error;
}

qsizetype openDescriptors()
{
    return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System | QDir::Dirs).size();
}

} // namespace

/// What the port does with its folder, its descriptors and the programs it starts, none of which
/// shows in a Windows call's result.
class PortTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void deadServersPipeIsTakenOver();
    void strayFileIsRemoved();
    void nothingStaysBehind();
    void openFolderIsNotUsed();
    void namesStayInTheFolder_data();
    void namesStayInTheFolder();
    void largestMessage();
    void deviceThatAnswersShort();
    void tooLargeRequest();
    void lateAnswerIsDropped();
    void endedProgramLeavesNoZombie();
};

void PortTest::init()
{
    for (const char* part : {"/pipe", "/lock", "/dev"})
        QDir(runtimeFolder() + part).removeRecursively();
}

void PortTest::deadServersPipeIsTakenOver()
{
    const pid_t child = ::fork();
    if (child == 0) {
        // With a client that was not served.
        createPipe();
        openPipe();
        ::_exit(0);
    }
    QCOMPARE(::waitpid(child, nullptr, 0), child);
    QCOMPARE(files(), QStringList({"QuorvelLeftover", "QuorvelLeftover"}));
    QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
    QCOMPARE(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    const ScopedHandle pipe(createPipe());
    QVERIFY(pipe.isValid());
    const ScopedHandle client(openPipe());
    QVERIFY(client.isValid());
}

void PortTest::strayFileIsRemoved()
{
    QVERIFY(QDir().mkpath(runtimeFolder() + "/pipe"));
    QFile stray(runtimeFolder() + "/pipe/QuorvelLeftover");
    QVERIFY(stray.open(QIODevice::WriteOnly));
    const ScopedHandle pipe(createPipe());
    QVERIFY(pipe.isValid());
    const ScopedHandle client(openPipe());
    QVERIFY(client.isValid());
}

void PortTest::nothingStaysBehind()
{
    const auto round = [] {
        const ScopedHandle pipe(createPipe());
        const ScopedHandle client(openPipe());
        QVERIFY(pipe.isValid() && client.isValid());
        QCOMPARE(openPipe(), INVALID_HANDLE_VALUE);
        ConnectNamedPipe(pipe.get(), nullptr);
        DisconnectNamedPipe(pipe.get());
        QCOMPARE(createPipe(), INVALID_HANDLE_VALUE);
        QCOMPARE(openDevice(), INVALID_HANDLE_VALUE);
    };
    round();
    const qsizetype before = openDescriptors();
    for (int i = 0; i < 20; ++i)
        round();
    QCOMPARE(openDescriptors(), before);
    QCOMPARE(files(), QStringList());
}

void PortTest::openFolderIsNotUsed()
{
    FakeDevice device;
    const ScopedHandle pipe(createPipe());
    const QFile::Permissions before = QFile::permissions(runtimeFolder());
    QVERIFY(QFile::setPermissions(runtimeFolder(), before | QFile::ExeOther));
    const HANDLE opened[] = {openDevice(), openPipe(), createPipe()};
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

void PortTest::largestMessage()
{
    const ScopedHandle pipe(createPipe(PipeStream::largestMessage));
    const ScopedHandle client(openPipe());
    const std::vector<char> message(PipeStream::largestMessage + 1, 'z');
    DWORD count = 77;
    QCOMPARE(
        WriteFile(client.get(), message.data(), PipeStream::largestMessage + 1, &count, nullptr),
        FALSE);
    QCOMPARE(GetLastError(), DWORD{ERROR_NO_SYSTEM_RESOURCES});
    QCOMPARE(count, 0U);
    QVERIFY(WriteFile(client.get(), message.data(), PipeStream::largestMessage, &count, nullptr));
    std::vector<char> buffer(message.size());
    QVERIFY(ReadFile(pipe.get(), buffer.data(), PipeStream::largestMessage, &count, nullptr));
    QCOMPARE(count, PipeStream::largestMessage);
}

void PortTest::deviceThatAnswersShort()
{
    FakeDevice fake;
    const ScopedHandle device(openDevice());
    QVERIFY(device.isValid());
    DWORD returned = 77;
    QCOMPARE(answeredRequest(fake, device.get(), 0, 200, 100, returned),
             DWORD{ERROR_DEVICE_NOT_CONNECTED});
    QCOMPARE(returned, 0U);
    // Nor may it store more than there is room for.
    QCOMPARE(answeredRequest(fake, device.get(), 0, 3, 4, returned),
             DWORD{ERROR_DEVICE_NOT_CONNECTED});
}

void PortTest::tooLargeRequest()
{
    FakeDevice fake;
    const ScopedHandle device(openDevice());
    DWORD returned = 0;
    QCOMPARE(request(device.get(), largestTransfer + 1, 0, returned),
             DWORD{ERROR_NO_SYSTEM_RESOURCES});
    QCOMPARE(request(device.get(), 0, largestTransfer + 1, returned),
             DWORD{ERROR_NO_SYSTEM_RESOURCES});
    QCOMPARE(answeredRequest(fake, device.get(), largestTransfer, 4, 4, returned),
             DWORD{ERROR_SUCCESS});
    QCOMPARE(returned, 4U);
}

void PortTest::lateAnswerIsDropped()
{
    FakeDevice fake;
    const ScopedHandle device(openDevice());
    DWORD returned = 0;
    WaitingThread thread([&] { return request(device.get(), 0, 200, returned); });
    const DeviceRequest cancelled = fake.receive();
    thread.cancel();
    QCOMPARE(thread.join(), DWORD{ERROR_OPERATION_ABORTED});

    // Longer and shorter than what is asked for next.
    for (const std::uint32_t size : {1U, 8U}) {
        fake.answer(cancelled, size, size);
        QCOMPARE(answeredRequest(fake, device.get(), 0, 4, 4, returned), DWORD{ERROR_SUCCESS});
        QCOMPARE(returned, 4U);
    }
}

void PortTest::endedProgramLeavesNoZombie()
{
    const auto result = ShellExecuteA(nullptr, "open", "true", nullptr, nullptr, SW_SHOWNORMAL);
    QVERIFY(std::bit_cast<std::uintptr_t>(result) > 32);
    QUORVEL_TRY_COMPARE(::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT), -1);
    QCOMPARE(errno, ECHILD);
}

QUORVEL_TEST_MAIN(PortTest)
#include "port_test.moc"
