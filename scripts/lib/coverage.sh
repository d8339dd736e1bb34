# Which lines and branches of src the tests run. Needs common.sh.
# shellcheck shell=bash

# The least share of the lines in percent; docs/testing.md tells what is left out.
coverage_minimum=98

# forget_coverage: takes away what earlier runs have counted.
forget_coverage()
{
    find "$root/build/coverage" -name '*.gcda' -delete
}

# report_coverage: prints each file with the lines that were not run, and fails when these are too
# many. The counts of all the programs that a source is part of are added up. Branches that only an
# exception takes are left out: almost every call has one.
report_coverage()
{
    note "Lines of src"
    (cd "$root" && gcovr --root . --filter src/ --exclude src/platform/windows/ \
        --exclude-throw-branches --exclude-unreachable-branches -j "$(nproc)" \
        --sort-uncovered --print-summary --fail-under-line "$coverage_minimum" build/coverage) ||
        die "fewer than $coverage_minimum % of the lines of src were run"
}
