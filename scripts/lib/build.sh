# Configuring and building by preset. Needs common.sh.
# shellcheck shell=bash

# build_preset PRESET [TARGET...]: configures build/PRESET when that was not done yet and builds
# the targets, or everything. Ninja shows how far it is.
build_preset()
{
    local preset=$1
    shift
    local folder=$root/build/$preset
    # What was compiled once is not compiled again, in whichever checkout.
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
    export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
    if [[ ! -f $folder/build.ninja ]]; then
        note "Configuring $preset"
        (cd "$root" && cmake --preset "$preset") || die "configuring $preset failed"
    fi
    note "Building $preset"
    local -a targets=()
    (($# == 0)) || targets=(--target "$@")
    cmake --build "$folder" --parallel "$(nproc)" "${targets[@]}" || die "building $preset failed"
}
