#include "system/soak/soak.h"

#include <QGuiApplication>
#include <QStringList>

#include <cstdio>

// quorvel-soak MINUTES [SEED]
// Operates the panel at random for so long; needs a display and what the system tests need.
int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    const int minutes = words.value(1).toInt();
    const unsigned seed = words.value(2, QStringLiteral("1")).toUInt();
    if (minutes < 1 || words.size() > 3) {
        std::fputs("usage: quorvel-soak MINUTES [SEED]\n", stderr);
        return 2;
    }
    std::printf("seed %u\n", seed);
    std::fflush(stdout);
    const bool sound = Soak(std::chrono::minutes(minutes), seed).run();
    std::puts(sound ? "passed" : "FAILED");
    return sound ? 0 : 1;
}
