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

# Quiet about processes that have already ended.
stop_processes()
{
    local pid
    for pid in "$@"; do
        kill "$pid" 2>/dev/null || true
    done
    for pid in "$@"; do
        wait_for 3 process_is_gone "$pid" || kill -KILL "$pid" 2>/dev/null || true
        wait "$pid" 2>/dev/null || true
    done
}

process_is_gone()
{
    # A child that has ended but was not waited for yet still has its number, as a zombie.
    [[ ! -e /proc/$1/stat ]] || [[ $(sed 's/.*) //' "/proc/$1/stat" 2>/dev/null) == Z* ]]
}
