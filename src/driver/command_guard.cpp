#include "driver/command_guard.h"

#include <iostream>

void writeErrorLine(std::string_view text, std::string_view detail)
{
    std::cerr << text << detail << std::endl;
}
