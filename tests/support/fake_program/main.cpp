#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>

// Does what the files beside it say; see FakeProgram.

namespace {

std::string contentOf(const std::string& name)
{
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string ownName()
{
    char name[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, name, MAX_PATH);
    return name;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string name = ownName();
    {
        // Whoever waits for the arguments must not see half of them.
        std::ofstream arguments(name + ".part");
        for (int i = 1; i < argc; ++i)
            arguments << argv[i] << '\n';
    }
    std::filesystem::rename(name + ".part", name + ".arguments");
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    std::cout << contentOf(name + ".output") << std::flush;
    std::cerr << contentOf(name + ".errors") << std::flush;

    int seconds = 0;
    int exitCode = 0;
    std::ifstream(name + ".plan") >> seconds >> exitCode;
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    return exitCode;
}
