#include "random/virtual_files.h"

#include "oracle/troubles.h"
#include "random/virtual_platform.h"
#include "support/panel_table.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using Kind = Oracle::Trouble::Kind;
namespace Disk = std::filesystem;

namespace {

const std::vector<std::string> names = [] {
    std::vector<std::string> list{"setting.ini"};
    for (const PanelTable::Model& model : PanelTable::models)
        list.push_back(model.name + std::string(".ini"));
    return list;
}();

/// A file of the folder that the program has open for writing.
struct OpenFile
{
    dev_t device;
    ino_t inode;
};

std::string folder = "/nowhere";
bool othersHand = false; ///< writes at present
Oracle::Troubles troubles;
std::vector<std::string> shadowed; ///< in their places are folders
std::mutex mutex;                  ///< of what follows: the pipe thread writes as well
std::map<int, OpenFile> openFiles; ///< by number, perhaps closed again meanwhile

bool has(const std::string& name, Kind kind)
{
    return troubles.has(name, kind, VirtualPlatform::interface().requests());
}

bool anyHas(Kind kind)
{
    return std::ranges::any_of(names, [=](const std::string& name) { return has(name, kind); });
}

std::string aside(const std::string& name)
{
    return folder + ".aside/" + name;
}

bool isShadowed(const std::string& name)
{
    return std::ranges::find(shadowed, name) != shadowed.end();
}

void moveIfThere(const std::string& from, const std::string& to)
{
    if (Disk::exists(from))
        Disk::rename(from, to);
}

void setFolder(const std::string& name, bool wanted)
{
    if (wanted == isShadowed(name))
        return;
    const std::string path = folder + '/' + name;
    if (wanted) {
        Disk::create_directories(folder + ".aside");
        moveIfThere(path, aside(name));
        Disk::create_directories(path);
        shadowed.push_back(name);
    } else {
        Disk::remove(path);
        moveIfThere(aside(name), path);
        std::erase(shadowed, name);
    }
}

template <typename Call> Call systems(const char* name)
{
    return reinterpret_cast<Call>(dlsym(RTLD_NEXT, name));
}

/// The name within the folder; none for a path elsewhere.
std::optional<std::string> nameOf(std::string_view path)
{
    if (!path.starts_with(folder) || path.size() <= folder.size() || path[folder.size()] != '/')
        return std::nullopt;
    return std::string(path.substr(folder.size() + 1));
}

/// 0 when a file of the folder may be opened that way.
int refusal(const char* path, int flags)
{
    const auto name = nameOf(path);
    if (!name)
        return 0;
    const bool exists = Disk::exists(path);
    if (exists && has(*name, Kind::unreadable))
        return EACCES;
    if ((flags & O_ACCMODE) == O_RDONLY)
        return 0;
    return (exists ? has(*name, Kind::readOnly) : anyHas(Kind::unwritable)) ? EACCES : 0;
}

void note(int file, const char* path, int flags)
{
    if ((flags & O_ACCMODE) == O_RDONLY || !std::string_view(path).starts_with(folder))
        return;
    struct stat status{};
    if (fstat(file, &status) != 0)
        return;
    const std::lock_guard guard(mutex);
    openFiles[file] = {status.st_dev, status.st_ino};
}

/// True for the number of a file of the folder, unless it is another by now.
bool isOpenFile(int file)
{
    const std::lock_guard guard(mutex);
    const auto found = openFiles.find(file);
    struct stat status{};
    return found != openFiles.end() && fstat(file, &status) == 0 &&
           status.st_dev == found->second.device && status.st_ino == found->second.inode;
}

} // namespace

void VirtualFiles::reset(const std::string& newFolder)
{
    troubles = Oracle::Troubles();
    update();
    folder = newFolder;
    Disk::remove_all(folder + ".aside");
}

bool VirtualFiles::apply(const Oracle::Action& action)
{
    if (!troubles.apply(action, VirtualPlatform::interface().requests()))
        return false;
    update();
    return true;
}

void VirtualFiles::update()
{
    for (const std::string& name : names)
        setFolder(name, has(name, Kind::folder));
}

std::string VirtualFiles::place(const std::string& name)
{
    return isShadowed(name) ? aside(name) : folder + '/' + name;
}

std::string VirtualFiles::read(const std::string& name)
{
    std::ifstream file(place(name), std::ios::binary);
    return {std::istreambuf_iterator(file), {}};
}

void VirtualFiles::write(const std::string& name, const std::string& content)
{
    Disk::create_directories(folder);
    othersHand = true;
    std::ofstream file(place(name), std::ios::binary);
    file << content;
    file.close();
    othersHand = false;
    if (!file)
        std::abort();
}

void VirtualFiles::remove(const std::string& name)
{
    Disk::remove(place(name));
}

// The system's calls, as the toolkit's files make them.

extern "C" int open64(const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const auto mode = va_arg(more, mode_t);
    va_end(more);
    if (const int error = refusal(path, flags); error != 0) {
        errno = error;
        return -1;
    }
    static const auto real = systems<int (*)(const char*, int, ...)>("open64");
    const int file = real(path, flags, mode);
    if (file >= 0)
        note(file, path, flags);
    return file;
}

extern "C" ssize_t write(int number, const void* bytes, size_t length)
{
    if (isOpenFile(number) && !othersHand && anyHas(Kind::full)) {
        errno = ENOSPC;
        return -1;
    }
    static const auto real = systems<ssize_t (*)(int, const void*, size_t)>("write");
    return real(number, bytes, length);
}

extern "C" int rename(const char* from, const char* to) noexcept
{
    const auto name = nameOf(to);
    if (name && has(*name, Kind::keptOpen) && Disk::exists(to)) {
        errno = EACCES;
        return -1;
    }
    static const auto real = systems<int (*)(const char*, const char*)>("rename");
    return real(from, to);
}

// A power cut is not among the troubles, and waiting for the disk would take most of the time.
extern "C" int fdatasync(int)
{
    return 0;
}
