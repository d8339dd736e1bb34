#include "system/soak/soak.h"

#include <QGuiApplication>
#include <QRegularExpression>
#include <QStringList>

#include <chrono>
#include <cstdio>

using namespace std::chrono_literals;

// quorvel-soak MINUTES|SECONDSs [SEED]
// Operates the panel at random for so long; needs a display and what the system tests need.
int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    const QRegularExpression form(QStringLiteral("^([1-9]\\d{0,6})(s?)$"));
    const QRegularExpressionMatch length = form.match(words.value(1));
    const std::chrono::seconds unit = length.captured(2).isEmpty() ? 60s : 1s;
    const unsigned seed = words.value(2, QStringLiteral("1")).toUInt();
    if (!length.hasMatch() || words.size() > 3) {
        std::fputs("usage: quorvel-soak MINUTES|SECONDSs [SEED]\n", stderr);
        return 2;
    }
    std::printf("seed %u\n", seed);
    std::fflush(stdout);
    const bool sound = Soak(length.captured(1).toInt() * unit, seed).run();
    std::puts(sound ? "passed" : "FAILED");
    return sound ? 0 : 1;
}
