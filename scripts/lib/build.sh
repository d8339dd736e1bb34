# Configuring and building by preset, one command at a time. Needs common.sh.
# shellcheck shell=bash

declare -A build_locks=()

# lock_build PRESET: waits until no other command works in build/PRESET and keeps others out of it
# until unlock_build or the end of this script and all that it started.
lock_build()
{
    [[ -z ${build_locks[$1]:-} ]] || return 0
    local lock
    mkdir -p "$root/build"
    exec {lock}>"$root/build/$1.lock"
    if ! flock --nonblock "$lock"; then
        note "Another command works in build/$1; waiting for it"
        flock "$lock"
    fi
    build_locks[$1]=$lock
}

unlock_build()
{
    local lock=${build_locks[$1]}
    exec {lock}>&-
    unset "build_locks[$1]"
}

# configuration_of PRESET: what a folder that was configured by it depends on, beside what CMake
# itself keeps an eye on.
configuration_of()
{
    printf '%s\n' "$root"
    [[ $1 != windows ]] || printf '%s\n' "${QUORVEL_QT_WINDOWS:?}"
    cat "$root/CMakePresets.json"
}

# build_preset PRESET [TARGET...]: configures build/PRESET when that was not done yet, or not for
# what is asked for now, and builds the targets, or everything. Ninja shows how far it is. The
# folder stays locked.
build_preset()
{
    local preset=$1
    shift
    local folder=$root/build/$preset
    lock_build "$preset"
    # What was compiled once is not compiled again, in whichever checkout.
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
    export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
    # Without these it does not keep what uses precompiled headers.
    export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
    if [[ ! -f $folder/build.ninja ]] ||
        ! configuration_of "$preset" | cmp --silent - "$folder/configuration.stamp"; then
        note "Configuring $preset"
        rm -f -- "$folder/configuration.stamp"
        (cd "$root" && "$root/scripts/contain" cmake --fresh --preset "$preset") ||
            die "configuring $preset failed"
        configuration_of "$preset" >"$folder/configuration.stamp"
    fi
    note "Building $preset"
    local -a targets=()
    (($# == 0)) || targets=(--target "$@")
    "$root/scripts/contain" cmake --build "$folder" --parallel "$(nproc)" "${targets[@]}" ||
        die "building $preset failed"
}

# state_of_package: all that the bytes of dist/ depend on, beside the installed packages.
state_of_package()
{
    commit_time
    printf '%s\n' "${QUORVEL_QT_WINDOWS:?}" "${QUORVEL_SIGN:-}"
    source_files . | (cd "$root" && xargs --null sha256sum --)
}
