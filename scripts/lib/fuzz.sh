# Runs the fuzz targets. Needs common.sh and build.sh.
# shellcheck shell=bash

fuzz_targets=(message panel dialog knob)

# How many inputs each gets when they are the same each time: as many as half a minute takes.
declare -A fuzz_runs=([message]=100000 [panel]=1000 [dialog]=20000 [knob]=10000)

# fuzz_target SECONDS NAME: feeds one target from the kept inputs and those that earlier runs have
# found, for that time and with a new seed; where no time is told, always the same. What breaks it
# is kept in build/fuzz/findings.
fuzz_target()
{
    local found=$root/build/fuzz/found/$2 log=$root/build/fuzz/$2.log code=0
    local extent=("-max_total_time=$1" "-seed=$((RANDOM * 32768 + RANDOM + 1))")
    if [[ -z $1 ]]; then
        found=$QUORVEL_FOLDER/found-$2
        extent=("-runs=${fuzz_runs[$2]}" -seed=1)
    fi
    mkdir -p "$found" "$root/build/fuzz/findings"
    "$root/build/fuzz/bin/$2_fuzz" "${extent[@]}" -timeout=60 -rss_limit_mb=0 \
        "-dict=$root/tests/fuzz/ini.dict" "-artifact_prefix=$root/build/fuzz/findings/$2-" \
        "$found" "$root/tests/fuzz/corpus/$2" >"$log" 2>&1 </dev/null || code=$?
    if ((code != 0)); then
        tail -n 60 "$log"
        printf 'Fuzzing %s failed; the input is in build/fuzz/findings\n' "$2"
        return 1
    fi
    printf '%s: %s, %s, %s\n' "$2" "$(grep '^Done' "$log")" "$(grep -o 'Seed: [0-9]*' "$log")" \
        "$(sed -n 's/^#[0-9]*[[:space:]]*DONE[[:space:]]*\(cov: [0-9]*\).*/\1/p' "$log")"
}

# fuzz [SECONDS]: all targets, as many at a time as there are processors, until one fails.
fuzz()
{
    local target running=0
    # The targets save files all the time, which on a disk would be all that they do.
    export TMPDIR=$QUORVEL_FOLDER
    export ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1
    export LSAN_OPTIONS="suppressions='$root/tests/sanitizers/leaks.txt':print_suppressions=0"
    unset QT_LOGGING_RULES QT_LOGGING_CONF QT_MESSAGE_PATTERN
    for target in "${fuzz_targets[@]}"; do
        if ((running == $(nproc))); then
            wait -n || return 1
            running=$((running - 1))
        fi
        fuzz_target "${1-}" "$target" &
        running=$((running + 1))
    done
    while ((running > 0)); do
        wait -n || return 1
        running=$((running - 1))
    done
}
