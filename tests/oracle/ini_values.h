#pragma once

#include "oracle/world.h"

#include <string>
#include <string_view>

namespace Oracle {

/// The keys of an INI file's text. Lines that are neither a section nor a key with a
/// name are skipped; of a key
/// that stands there twice the last one counts.
IniFile parseIni(std::string_view text);

/// What a stored text means for a knob: an integer in decimal, else `missing`.
int knobValue(const IniFile& file, const std::string& key, int missing);

/// What a stored text means for a button: on when it is "true" or an integer other than zero.
bool buttonValue(const IniFile& file, const std::string& key);

/// A stored text of the dialog as it is shown.
std::string textValue(const IniFile& file, const std::string& key, const std::string& missing);

/// True when the text is an integer in decimal within the range of an int: an optional sign and
/// digits, with blanks around it or not.
bool parseInt(std::string_view text, int& number);

} // namespace Oracle
