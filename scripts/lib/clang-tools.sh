# The LLVM tools that judge the sources. Needs common.sh.
# shellcheck shell=bash

# Other versions judge differently; Debian 13 and Debian 12 both have this one.
clang_version=19

# clang_tool NAME: prints the command of clang-format or clang-tidy in that version.
clang_tool()
{
    local found
    if command -v "$1-$clang_version"; then
        return 0
    fi
    found=$("$1" --version 2>/dev/null | sed -n '/version/{s/.*version \([0-9]*\).*/\1/p;q}') || true
    [[ $found == "$clang_version" ]] ||
        die "the sources are held to $1 $clang_version, and here is ${found:-none}"
    command -v "$1"
}
