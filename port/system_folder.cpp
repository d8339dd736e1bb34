#include "platform/system_folder.h"

std::wstring systemFolder()
{
    return {};
}
