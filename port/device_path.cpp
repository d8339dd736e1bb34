#include "port/device_path.h"

namespace {

constexpr std::wstring_view devicePrefix = LR"(\\.\)";
constexpr std::wstring_view pipePrefix = LR"(\\.\pipe\)";

std::string fileName(std::wstring_view name)
{
    std::string result;
    for (const wchar_t character : name) {
        if (character <= L' ' || character >= 127 || character == L'/' || character == L'\\')
            return {};
        result += static_cast<char>(character);
    }
    return result == "." || result == ".." ? std::string() : result;
}

} // namespace

DevicePath parseDevicePath(std::wstring_view path)
{
    if (path.starts_with(pipePrefix))
        return {fileName(path.substr(pipePrefix.size())), true};
    if (path.starts_with(devicePrefix))
        return {fileName(path.substr(devicePrefix.size())), false};
    return {};
}
