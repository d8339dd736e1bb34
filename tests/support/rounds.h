#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <algorithm>

/// How long the tests go on that try random moments.
namespace Rounds {

/// QUORVEL_TEST_ROUNDS, or what a run within all the others can afford.
inline int number(int usual)
{
    const int wanted = qEnvironmentVariableIntValue("QUORVEL_TEST_ROUNDS");
    return wanted > 0 ? wanted : usual;
}

/// QUORVEL_TEST_SEED, or always the same.
inline unsigned seed()
{
    return qEnvironmentVariableIsSet("QUORVEL_TEST_SEED")
               ? qEnvironmentVariable("QUORVEL_TEST_SEED").toUInt()
               : 1;
}

/// Qt Test ends a function after five minutes, which many rounds exceed.
inline void allowTimeFor(int rounds)
{
    constexpr int longestRound = 60'000; // ms
    constexpr int usual = 600'000;       // ms
    qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number(std::max(usual, rounds * longestRound)));
}

} // namespace Rounds
