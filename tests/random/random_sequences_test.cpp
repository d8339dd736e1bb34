#include "oracle/oracle.h"
#include "random/comparison.h"
#include "random/generator.h"
#include "random/private_home.h"
#include "random/record.h"
#include "random/virtual_time.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>

#include <csignal>
#include <cstdio>
#include <cstring>

// random_sequences_test [--seed N] [--sequences N] [--minutes N] [--length N] [FILE...]
// Runs the sequences of the files, or made-up ones, and reports where program and oracle part.

namespace {

struct Options
{
    std::uint64_t seed = 1;
    int sequences = 200;
    int length = 60;
    int minutes = 0; ///< when set, as many sequences as fit
    QStringList files;
};

volatile std::uint64_t presentSeed = 0;

/// The last word of a program that died: which seed it died of.
extern "C" void tellSeed(int signal)
{
    char text[64];
    const int length = std::snprintf(text, sizeof text, "crashed in seed %llu\n",
                                     static_cast<unsigned long long>(presentSeed));
    std::fwrite(text, 1, static_cast<std::size_t>(length), stdout);
    std::fflush(stdout);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

Options parse(const QStringList& arguments)
{
    Options options;
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& name = arguments[i];
        if (!name.startsWith(QLatin1String("--"))) {
            options.files.append(name);
            continue;
        }
        const auto number = arguments.value(++i).toULongLong();
        if (name == QLatin1String("--seed"))
            options.seed = number;
        else if (name == QLatin1String("--sequences"))
            options.sequences = static_cast<int>(number);
        else if (name == QLatin1String("--length"))
            options.length = static_cast<int>(number);
        else if (name == QLatin1String("--minutes"))
            options.minutes = static_cast<int>(number);
    }
    return options;
}

void report(const std::vector<Oracle::Action>& sequence, const Difference& difference)
{
    std::printf("%s\n", difference.report.c_str());
    const auto shortest = shortened(sequence);
    Coverage ignored;
    const auto again = compare(shortest, ignored);
    std::printf("the shortest sequence:\n%s%s\n", toText(shortest).c_str(),
                again ? again->report.c_str() : "  (it no longer fails)\n");
    std::fflush(stdout);
}

int runFiles(const Options& options, Coverage& coverage)
{
    int failures = 0;
    for (const QString& name : options.files) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            std::printf("cannot read %s\n", qPrintable(name));
            return 1;
        }
        const auto sequence = Oracle::parseSequence(file.readAll().toStdString());
        if (const auto difference = compare(sequence, coverage)) {
            std::printf("%s\n%s\n", qPrintable(name), difference->report.c_str());
            ++failures;
        }
    }
    return failures;
}

int runSeeds(const Options& options, Coverage& coverage)
{
    constexpr int enoughFailures = 5;
    QElapsedTimer clock;
    clock.start();
    int failures = 0;
    for (int i = 0; failures < enoughFailures; ++i) {
        if (options.minutes > 0 ? clock.elapsed() >= 60'000LL * options.minutes
                                : i >= options.sequences)
            break;
        presentSeed = options.seed + static_cast<std::uint64_t>(i);
        const auto sequence = makeSequence(presentSeed, options.length);
        if (const auto difference = compare(sequence, coverage)) {
            std::printf("seed %llu\n", static_cast<unsigned long long>(presentSeed));
            report(sequence, *difference);
            ++failures;
        }
    }
    std::printf("%.1f s: ", static_cast<double>(clock.elapsed()) / 1000);
    return failures;
}

} // namespace

int main(int argc, char** argv)
{
    const PrivateHome home;
    QCoreApplication::setEventDispatcher(&VirtualTime::instance());
    QApplication application(argc, argv);
    for (const int signal : {SIGSEGV, SIGABRT, SIGFPE, SIGBUS})
        std::signal(signal, tellSeed);
    Record::begin();
    const Options options = parse(QCoreApplication::arguments());
    Coverage coverage;
    const int failures =
        options.files.isEmpty() ? runSeeds(options, coverage) : runFiles(options, coverage);
    Record::end();
    std::printf("%lld sequences, %lld actions, %zu pairs of situation and action, %d failures\n",
                coverage.sequences, coverage.actions, coverage.pairs.size(), failures);
    return failures == 0 ? 0 : 1;
}
