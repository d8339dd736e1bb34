#include "random/harness.h"

#include "random/private_home.h"
#include "random/record.h"
#include "random/virtual_time.h"

#include <QApplication>

#include <csignal>
#include <cstdio>

namespace {

volatile unsigned long long presentSeed = 0;

/// The last word of a program that died: which seed or case of a matrix it died of.
extern "C" void tellSeed(int signal)
{
    std::printf("crashed in seed or case %llu\n", presentSeed);
    std::fflush(stdout);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

} // namespace

void noteSeed(unsigned long long seed)
{
    presentSeed = seed;
}

int runHarness(int argc, char** argv, const std::function<int(const QStringList&)>& test)
{
    const PrivateHome home;
    QCoreApplication::setEventDispatcher(&VirtualTime::instance());
    QApplication application(argc, argv);
    for (const int signal : {SIGSEGV, SIGABRT, SIGFPE, SIGBUS})
        std::signal(signal, tellSeed);
    Record::begin();
    const int result = test(QCoreApplication::arguments());
    Record::end();
    return result;
}
