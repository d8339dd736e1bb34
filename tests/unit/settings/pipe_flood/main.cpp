#include "pipe_peer.h"

#include <QByteArray>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int floodClients = 4;
const QByteArray openMessage = QByteArray(16, '\0') + QByteArray("\1\0\0\0", 4);

/// What a client does once it is connected; each next one something else.
void visit(PipePeer::Client& client, unsigned way)
{
    switch (way % 6) {
    case 0: // Waits until it has been heard.
        client.write(openMessage);
        client.waitForParting();
        break;
    case 1: // Writes and vanishes.
        client.write(openMessage);
        break;
    case 2: // Never writes.
        QThread::msleep(20);
        break;
    case 3: // Vanishes at once.
        break;
    case 4: // More than is read.
        client.write(QByteArray(1025, '\1'));
        break;
    default: // As many messages as are taken.
        for (int i = 0; i < 20 && client.write(QByteArray(i, '\1')) == ERROR_SUCCESS; ++i) {
        }
        break;
    }
}

} // namespace

/// pipe-flood SEED: clients of the settings pipe, which come as fast as they can until it is
/// killed. Prints how many came and how many got in.
int main(int argc, char** argv)
{
    const unsigned seed = argc == 2 ? static_cast<unsigned>(std::stoul(argv[1])) : 1;
    std::atomic<int> attempts = 0;
    std::atomic<int> connections = 0;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < floodClients; ++i) {
        threads.emplace_back([&, way = seed + i]() mutable {
            for (;;) {
                PipePeer::Client client(PipePeer::settingsPipe);
                ++attempts;
                if (client.tryConnect() != ERROR_SUCCESS)
                    continue;
                ++connections;
                visit(client, way++);
            }
        });
    }
    while (std::printf("%d %d\n", attempts.load(), connections.load()) > 0 &&
           std::fflush(stdout) == 0)
        QThread::msleep(50);
    // Nobody listens any more, and the clients have no end of their own.
    std::_Exit(0);
}
