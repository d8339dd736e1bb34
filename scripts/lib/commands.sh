# Running what the documents name. Needs common.sh.
# shellcheck shell=bash

# run_commands SECONDS COMMAND...: one after another, each for that long at the most, until one
# fails, whose output is shown. None may leave other files in the checkout than it found.
run_commands()
{
    local limit=$1 command before began output=$QUORVEL_FOLDER/output
    shift
    before=$(sums_of_sources)
    for command in "$@"; do
        began=$SECONDS
        timeout --kill-after=20 "$limit" bash -c "$command" >"$output" 2>&1 || {
            cat "$output" >&2
            die "failed: $command"
        }
        diff <(printf '%s\n' "$before") <(sums_of_sources) >&2 || die "left other files: $command"
        note "$command ($((SECONDS - began)) s)"
    done
}

sums_of_sources()
{
    # What ./benchmark finds is kept there.
    source_files . ':!benchmarks/results' | (cd "$root" && xargs --null sha256sum --)
}
