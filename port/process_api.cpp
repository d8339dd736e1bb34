#include "port/win32_port.h"

#include <cerrno>
#include <chrono>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

/// Returns 0 or the system's error number.
int start(std::vector<std::string>& words, LPCSTR folder, pid_t& child)
{
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    if (folder != nullptr)
        ::posix_spawn_file_actions_addchdir_np(&actions, folder);
    const int error =
        ::posix_spawnp(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return error;
}

} // namespace

void Sleep(DWORD milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

HINSTANCE ShellExecuteA(HWND, LPCSTR, LPCSTR file, LPCSTR parameters, LPCSTR folder, INT)
{
    std::vector<std::string> words = {file};
    std::istringstream rest(parameters == nullptr ? "" : parameters);
    for (std::string word; rest >> word;)
        words.push_back(word);
    pid_t child = 0;
    const int error = start(words, folder, child);
    std::uintptr_t result = 42; // What Windows returns for a started program.
    if (error == 0)
        // Takes the exit status when the program ends, so that none stays behind as a zombie.
        std::thread([child] { ::waitpid(child, nullptr, 0); }).detach();
    else
        result = error == ENOENT ? ERROR_FILE_NOT_FOUND : ERROR_ACCESS_DENIED;
    return std::bit_cast<HINSTANCE>(result);
}
