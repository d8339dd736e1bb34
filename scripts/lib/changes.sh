# What has changed here. Needs common.sh.
# shellcheck shell=bash

# base_of_changes: prints the commit that the sources are compared with: QUORVEL_BASE, or the last
# one that is both here and in the main branch of where this was cloned from, or the one before when
# all is in there; where none of them is known, the one in which there is nothing.
base_of_changes()
{
    local base
    base=${QUORVEL_BASE:-$(in_git merge-base HEAD origin/HEAD 2>/dev/null)} || true
    [[ -n $base && $(in_git rev-parse "$base") != $(in_git rev-parse HEAD) ]] ||
        base=$(in_git rev-parse --verify --quiet HEAD^) ||
        base=$(in_git hash-object -t tree /dev/null)
    # A name that is no commit here, as one that a shallow clone lacks, must not pass for no change.
    in_git cat-file -e "$base" || die "there is no commit $base to compare with"
    in_git rev-parse --verify "$base"
}

# changed_files BASE PATTERN...: the files that match and are not as they were then, committed or
# not, a line each.
changed_files()
{
    in_git -c core.quotePath=off diff --name-only "$1" -- "${@:2}" || return
    in_git -c core.quotePath=off ls-files --others --exclude-standard -- "${@:2}"
}
