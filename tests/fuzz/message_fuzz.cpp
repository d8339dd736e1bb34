#include "asio/thread_settings_pip.h"
#include "fuzz/fuzzing.h"
#include "oracle/pipe.h"
#include "random/record.h"
#include "random/virtual_platform.h"
#include "random/virtual_time.h"

#include <cstdlib>
#include <memory>

// A message of the ASIO driver: any bytes of any length. The thread must print what the oracle says
// and ask for the dialog when it should.

namespace {

int asked = 0;
std::unique_ptr<ThreadSettingsPip> thread;

void startThread()
{
    thread = std::make_unique<ThreadSettingsPip>(nullptr);
    // Before the pipe is gone.
    std::atexit([] { thread.reset(); });
    QObject::connect(thread.get(), &ThreadSettingsPip::progressUpdated, thread.get(),
                     [] { ++asked; });
    thread->start();
    Fuzzing::require(VirtualPlatform::pipeIsServed(), "the pipe is served");
    Record::takeEvents();
    Record::takeThreadLines();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    Fuzzing::begin(*argc, *argv);
    startThread();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string message(Fuzzing::text(data, size));
    Oracle::World world;
    Oracle::Pipe::receive(world, message);
    asked = 0;
    Fuzzing::require(VirtualPlatform::sendMessage(message), "the message was served");
    VirtualTime::instance().settle();
    Fuzzing::require(Record::takeThreadLines() == world.threadLines, "the thread says the same");
    Fuzzing::require(asked == (world.dialog.visible ? 1 : 0), "the dialog is asked for");
    Fuzzing::require(Record::takeEvents().empty(), "nothing else happens");
    return 0;
}
