#include "port/runtime_folder.h"

#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

bool createFolder(const std::string& path)
{
    return ::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST;
}

} // namespace

std::string runtimeFolder()
{
    std::string chosen = environment("QUORVEL_RUNTIME_DIR");
    if (!chosen.empty())
        return chosen;
    const std::string session = environment("XDG_RUNTIME_DIR");
    if (!session.empty())
        return session + "/quorvel";
    return "/tmp/quorvel-" + std::to_string(::getuid());
}

bool runtimeFolderIsPrivate()
{
    struct stat status = {};
    return ::lstat(runtimeFolder().c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::getuid() && (status.st_mode & 0077) == 0;
}

bool createRuntimeFolder(const std::string& part)
{
    return createFolder(runtimeFolder()) && runtimeFolderIsPrivate() &&
           createFolder(runtimeFolder() + '/' + part);
}
