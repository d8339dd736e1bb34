#pragma once

#include "oracle/action.h"

#include <map>
#include <string>

namespace Oracle {

/// What keeps an INI file from being read or saved, for as long as the driver is asked certain
/// requests: a clock that the panel under test and the oracle share.
struct Trouble
{
    enum class Kind {
        unwritable, ///< nothing can be made or renamed in the folder
        full,       ///< nothing can be written to the disk
        readOnly,   ///< the file cannot be opened for writing
        keptOpen,   ///< the file cannot be replaced, for another program has it open
        folder,     ///< somebody has put the file aside and made a folder of its name
        unreadable, ///< the file, if there is one, cannot be opened: another program has it for
                    ///< itself
    };
    static constexpr long long always = -1;

    Kind kind = Kind::unwritable;
    long long begin = 0; ///< in requests since the start
    long long end = always;
};

/// The troubles of the four files, one for each file and one for their folder.
class Troubles
{
public:
    /// trouble FILE|folder KIND [AFTER [LASTS]], with AFTER and LASTS in requests from now on, and
    /// mend, which ends all. False for another action, which changes nothing.
    bool apply(const Action& action, long long requests);

    bool has(const std::string& file, Trouble::Kind kind, long long requests) const;

private:
    bool isOn(const std::string& place, Trouble::Kind kind, long long requests) const;

    std::map<std::string, Trouble> list;
};

} // namespace Oracle
