#include "oracle/action.h"
#include "random/harness.h"
#include "random/program.h"
#include "random/record.h"
#include "random/virtual_platform.h"

#include <cstdio>
#include <malloc.h>

namespace {

constexpr int rounds = 1000;
constexpr int warmUp = 200;

/// Bytes that the program has on the heap.
long long heap()
{
    Record::takeEvents();
    Record::takeThreadLines();
    return static_cast<long long>(mallinfo2().uordblks);
}

void perform(Program& program, const char* action)
{
    program.perform(Oracle::parseAction(action));
}

void arriveAndLeave(Program& program)
{
    perform(program, "plug 2 0");
    perform(program, "wait 2000");
    perform(program, "unplug");
    perform(program, "wait 2500");
    heap();
}

void report(const char* what, long long before)
{
    const long long grown = heap() - before;
    Record::end();
    std::printf("%s %lld %zu\n", what, grown, VirtualPlatform::openHandles().size());
    std::fflush(stdout);
    Record::begin();
}

int measure()
{
    Program program;
    perform(program, "start en_US");
    for (int round = 0; round < warmUp; ++round)
        arriveAndLeave(program);
    long long before = heap();
    for (int round = 0; round < rounds; ++round)
        arriveAndLeave(program);
    report("arrivals", before);

    perform(program, "plug 2 0");
    perform(program, "wait 3600000");
    before = heap();
    for (int hour = 0; hour < 24; ++hour) {
        perform(program, "wait 3600000");
        heap();
    }
    report("day", before);
    perform(program, "quit");
    return 0;
}

} // namespace

/// benchmark-growth: prints the bytes by which the heap has grown, and how many handles are open,
/// after 1000 arrivals of a KA2 and after a day with one attached; on a clock of its own.
int main(int argc, char** argv)
{
    return runHarness(argc, argv, [](const QStringList&) { return measure(); });
}
