#include "random/matrix.h"

#include "random/comparison.h"
#include "random/harness.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

namespace {

/// Empty when the program and the oracle went the same way to a panel at work whose controls are in
/// the files.
std::string failure(const MatrixCase& single, Coverage& coverage)
{
    if (const auto difference = compare(single.sequence, coverage))
        return "action " + std::to_string(difference->action) + '\n' + difference->report;
    if (!coverage.recovered)
        return "it did not recover\n";
    return coverage.saved ? "" : "the files do not hold what the controls show\n";
}

int runCases(const std::vector<MatrixCase>& cases, std::size_t every)
{
    QElapsedTimer clock;
    clock.start();
    Coverage coverage;
    int failures = 0;
    for (std::size_t i = 0; i < cases.size(); i += every) {
        noteSeed(i);
        const std::string report = failure(cases[i], coverage);
        if (report.empty())
            continue;
        ++failures;
        std::printf("%s: %s\n", cases[i].name.c_str(), report.c_str());
        std::fflush(stdout);
    }
    std::printf("%.1f s: %lld of %zu cases, %lld actions, %d failures\n",
                static_cast<double>(clock.elapsed()) / 1000, coverage.sequences, cases.size(),
                coverage.actions, failures);
    return failures == 0 ? 0 : 1;
}

} // namespace

int runMatrix(int argc, char** argv, const std::vector<MatrixCase>& cases)
{
    return runHarness(argc, argv, [&](const QStringList& arguments) {
        const qsizetype every = arguments.indexOf(QStringLiteral("--every"));
        return runCases(cases, every < 0 ? 1 : std::max(arguments.value(every + 1).toUInt(), 1U));
    });
}
