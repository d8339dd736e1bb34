#pragma once

#include "support/patience.h"

#include <QTest>

/// QCOMPARE once both are the same or the patience is over; events come meanwhile. The toolkit's
/// own QTRY_COMPARE_WITH_TIMEOUT narrows a number in some versions, of which compilers warn.
#define QUORVEL_TRY_COMPARE(actual, expected)                                                      \
    do {                                                                                           \
        (void)QTest::qWaitFor([&] { return (actual) == (expected); }, patience);                   \
        QCOMPARE(actual, expected);                                                                \
    } while (false)
