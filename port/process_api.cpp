#include "port/file_descriptor.h"
#include "port/win32_port.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

/// Owns the two attribute blocks of posix_spawn: a session of its own, no standard streams,
/// signals as a fresh program expects them.
class DetachedStart
{
public:
    explicit DetachedStart(LPCSTR folder)
    {
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawnattr_init(&attributes);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
        if (folder != nullptr)
            ::posix_spawn_file_actions_addchdir_np(&actions, folder);
        sigset_t none;
        sigset_t all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setsigdefault(&attributes, &all);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK |
                                                    POSIX_SPAWN_SETSIGDEF);
    }
    DetachedStart(const DetachedStart&) = delete;
    DetachedStart& operator=(const DetachedStart&) = delete;
    ~DetachedStart()
    {
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&actions);
    }

    /// Returns 0 or the system's error number.
    int run(std::vector<std::string>& words, pid_t& child) const
    {
        std::vector<char*> arguments;
        arguments.reserve(words.size() + 1);
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        return ::posix_spawnp(&child, arguments.front(), &actions, &attributes, arguments.data(),
                              environ);
    }

private:
    posix_spawn_file_actions_t actions = {};
    posix_spawnattr_t attributes = {};
};

/// Takes the exit status when the program ends, so that none stays behind as a zombie.
void reapLater(pid_t child)
{
    std::thread([child] {
        while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
        }
    }).detach();
}

DWORD shellError(int systemError)
{
    switch (systemError) {
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case EACCES:
        return ERROR_ACCESS_DENIED;
    case ENOMEM:
    case EAGAIN:
        return ERROR_NOT_ENOUGH_MEMORY;
    default:
        return ERROR_GEN_FAILURE;
    }
}

HINSTANCE shellResult(std::uintptr_t number)
{
    return std::bit_cast<HINSTANCE>(number);
}

} // namespace

void Sleep(DWORD milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

HINSTANCE ShellExecuteA(HWND, LPCSTR, LPCSTR file, LPCSTR parameters, LPCSTR folder, INT)
{
    constexpr std::uintptr_t started = 42; // What Windows returns for a started program.
    std::vector<std::string> words = {file};
    std::istringstream rest(parameters == nullptr ? "" : parameters);
    for (std::string word; rest >> word;)
        words.push_back(word);
    pid_t child = 0;
    const int error = DetachedStart(folder).run(words, child);
    if (error != 0) {
        SetLastError(shellError(error));
        return shellResult(shellError(error));
    }
    reapLater(child);
    return shellResult(started);
}
