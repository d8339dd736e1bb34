#include "oracle/codes.h"
#include "random/comparison.h"
#include "random/generator.h"
#include "random/harness.h"
#include "random/kept_cases.h"

#include <QElapsedTimer>
#include <QFile>

#include <cstdio>

// random_sequences_test [--seed N] [--sequences N] [--seconds N] [--length N] [--quick]
// random_sequences_test [--kept] FILE...
// Runs made-up sequences, or those of the files and the kept ones, and reports where program and
// oracle part; with --quick it ends at the first such place and does not look for a shorter way
// there.

namespace {

struct Options
{
    std::uint64_t seed = 1;
    int sequences = 200;
    int length = 60;
    int seconds = 0; ///< when set, as many sequences as fit
    bool quick = false;
    bool kept = false;
    QStringList files;
};

Options parse(const QStringList& arguments)
{
    Options options;
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& name = arguments[i];
        if (!name.startsWith(QLatin1String("--"))) {
            options.files.append(name);
            continue;
        }
        if (name == QLatin1String("--quick")) {
            options.quick = true;
            continue;
        }
        if (name == QLatin1String("--kept")) {
            options.kept = true;
            continue;
        }
        const auto number = arguments.value(++i).toULongLong();
        if (name == QLatin1String("--seed"))
            options.seed = number;
        else if (name == QLatin1String("--sequences"))
            options.sequences = static_cast<int>(number);
        else if (name == QLatin1String("--length"))
            options.length = static_cast<int>(number);
        else if (name == QLatin1String("--seconds"))
            options.seconds = static_cast<int>(number);
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

/// Tells of the codes that no fault has refused: the kept sequences leave out none.
int runKept(Coverage& coverage)
{
    int failures = 0;
    for (const MatrixCase& kept : keptCases()) {
        if (const auto difference = compare(kept.sequence, coverage)) {
            std::printf("%s\n%s\n", kept.name.c_str(), difference->report.c_str());
            ++failures;
        }
    }
    for (const std::uint32_t code : Oracle::Code::all) {
        if (!coverage.refusedCodes.contains(code)) {
            std::printf("%x was never refused\n", code);
            ++failures;
        }
    }
    return failures;
}

int runFiles(const Options& options, Coverage& coverage)
{
    int failures = options.kept ? runKept(coverage) : 0;
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
        if (options.seconds > 0 ? clock.elapsed() >= 1000LL * options.seconds
                                : i >= options.sequences)
            break;
        const std::uint64_t seed = options.seed + static_cast<std::uint64_t>(i);
        noteSeed(seed);
        const auto sequence = makeSequence(seed, options.length);
        if (const auto difference = compare(sequence, coverage)) {
            std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
            ++failures;
            if (options.quick) {
                std::printf("%s", difference->report.c_str());
                break;
            }
            report(sequence, *difference);
        }
    }
    std::printf("%.1f s: ", static_cast<double>(clock.elapsed()) / 1000);
    return failures;
}

} // namespace

int main(int argc, char** argv)
{
    return runHarness(argc, argv, [](const QStringList& arguments) {
        const Options options = parse(arguments);
        Coverage coverage;
        const int failures = options.files.isEmpty() && !options.kept ? runSeeds(options, coverage)
                                                                      : runFiles(options, coverage);
        std::printf(
            "%lld sequences, %lld actions, %zu pairs of situation and action, %d failures\n",
            coverage.sequences, coverage.actions, coverage.pairs.size(), failures);
        return failures == 0 ? 0 : 1;
    });
}
