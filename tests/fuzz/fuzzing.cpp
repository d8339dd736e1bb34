#include "fuzz/fuzzing.h"

#include "random/private_home.h"
#include "random/program.h"
#include "random/record.h"
#include "random/virtual_files.h"
#include "random/virtual_platform.h"
#include "random/virtual_time.h"
#include "support/settings_files.h"

#include <QApplication>
#include <QHashFunctions>

#include <bit>
#include <cstdio>
#include <cstdlib>

void Fuzzing::begin(int& argc, char** argv)
{
    // What a seed finds is found again.
    QHashSeed::setDeterministicGlobalSeed();
    static const PrivateHome home;
    QCoreApplication::setEventDispatcher(&VirtualTime::instance());
    // The fuzzer ends the process from within; nothing of the toolkit is torn down before that.
    static const auto* const application = new QApplication(argc, argv);
    static_cast<void>(application);
    Record::begin();
    VirtualPlatform::reset();
    VirtualFiles::reset(Program::folder().toStdString());
}

void Fuzzing::require(bool holds, const std::string& what)
{
    if (holds)
        return;
    std::fprintf(stderr, "not true: %s\n", what.c_str());
    std::abort();
}

std::string_view Fuzzing::text(const std::uint8_t* data, std::size_t size)
{
    return {std::bit_cast<const char*>(data), size};
}

void Fuzzing::forgetFiles()
{
    forgetSettingsFiles();
    VirtualTime::instance().settle();
    Record::takeEvents();
    Record::takeThreadLines();
}
