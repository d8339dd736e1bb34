#pragma once

#include <string>
#include <utility>
#include <vector>

/// While it lives, no variable of the environment names a library or a folder of plug-ins to the
/// toolkit, which then finds those in the program's own folder only; programs that are started
/// later find the variables as they were. Elsewhere than on Windows, where toolkit and plug-ins
/// are the system's, it changes nothing. For the main thread, before there are others.
class OwnPlugins
{
public:
    OwnPlugins();
    ~OwnPlugins();
    OwnPlugins(const OwnPlugins&) = delete;
    OwnPlugins& operator=(const OwnPlugins&) = delete;

private:
    std::vector<std::pair<const wchar_t*, std::wstring>> hidden;
};
