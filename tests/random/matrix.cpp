#include "random/matrix.h"

#include "random/comparison.h"
#include "random/harness.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

namespace {

int runCases(const std::vector<MatrixCase>& cases, std::size_t every)
{
    QElapsedTimer clock;
    clock.start();
    Coverage coverage;
    int failures = 0;
    for (std::size_t i = 0; i < cases.size(); i += every) {
        const auto difference = compare(cases[i].sequence, coverage);
        if (!difference && coverage.recovered)
            continue;
        ++failures;
        std::printf("%s, action %zu\n%s\n", cases[i].name.c_str(),
                    difference ? difference->action : cases[i].sequence.size(),
                    difference ? difference->report.c_str() : "  it did not recover\n");
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
