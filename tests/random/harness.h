#pragma once

#include <QStringList>

#include <functional>

/// Runs a test of the real program on the test's own platform and clock: a private home, the
/// application object, the record. Returns what the test returns; prints the seed when it dies.
int runHarness(int argc, char** argv, const std::function<int(const QStringList&)>& test);

/// What the test is at, for its last word.
void noteSeed(unsigned long long seed);
