#include "platform/own_plugins.h"

#include <cstdlib>

namespace {

constexpr const wchar_t* variables[] = {
    L"QT_PLUGIN_PATH", L"QT_QPA_PLATFORM_PLUGIN_PATH",
    L"QT_LOAD_TESTABILITY", // has a library loaded by its mere name
};

} // namespace

OwnPlugins::OwnPlugins()
{
    for (const wchar_t* name : variables) {
        if (const wchar_t* value = _wgetenv(name)) {
            hidden.emplace_back(name, value);
            _wputenv_s(name, L"");
        }
    }
}

OwnPlugins::~OwnPlugins()
{
    for (const auto& [name, value] : hidden)
        _wputenv_s(name, value.c_str());
}
