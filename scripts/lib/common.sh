# What the commands share. Sourced, with `set -euo pipefail` already in force.
# shellcheck shell=bash

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
program=$(basename -- "$0")

die()
{
    printf '%s: %s\n' "$program" "$*" >&2
    exit 1
}

note()
{
    printf '==> %s\n' "$*"
}

# wait_for SECONDS COMMAND...: repeats the command until it succeeds; fails after that time.
wait_for()
{
    local attempts=$(($1 * 20))
    shift
    until "$@"; do
        ((attempts-- > 0)) || return 1
        sleep 0.05
    done
}

# contained [--in FOLDER] -- ARGUMENT...: makes sure that nothing of the calling script stays
# behind. Its first call starts the script once more, with these arguments, below scripts/contain,
# which tells what is set then; the second call returns. What needs a terminal or must not be
# ended half-way, such as installing packages, belongs before it.
contained()
{
    [[ ${QUORVEL_CONTAINED:-} != "$$" ]] || return 0
    local -a options=()
    while [[ $1 != -- ]]; do
        options+=("$1")
        shift
    done
    shift
    exec "$root/scripts/contain" "${options[@]}" "$(realpath -- "$0")" "$@"
}

# commit_time: prints the time of the commit that is checked out, in seconds since 1970, or what
# SOURCE_DATE_EPOCH says.
commit_time()
{
    if [[ -n ${SOURCE_DATE_EPOCH:-} ]]; then
        printf '%s\n' "$SOURCE_DATE_EPOCH"
    else
        in_git log -1 --format=%ct
    fi
}

# project_version FOLDER: prints the version of what was configured in that build folder.
project_version()
{
    local version
    version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$1/CMakeCache.txt")
    [[ -n $version ]] || die "the build in $1 has no version"
    printf '%s\n' "$version"
}

# in_git ARGUMENT...: runs git in the checkout. Who owns it does not matter: its scripts run already.
in_git()
{
    git -c safe.directory="$root" -C "$root" "$@"
}

# source_files PATTERN...: the files of the checkout that match, new ones included, each ended by a
# zero byte.
source_files()
{
    in_git ls-files -z --cached --others --exclude-standard -- "$@" |
        while IFS= read -r -d '' file; do
            [[ ! -e $root/$file ]] || printf '%s\0' "$file"
        done
}
