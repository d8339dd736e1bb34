#!/usr/bin/env bash
# Runs scripts/windows/build-qt-for-windows with stand-ins for apt, CMake and Ninja: what it says and
# leaves behind when something fails or stops it, what it resumes, and what its result is named
# after.
# What is checked is text that eval runs later.
# shellcheck disable=SC2034
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
checkout=$(cd -- "$here/../.." && pwd)
source "$here/fake_tools.sh"

base=$(mktemp -d)
trap 'rm -rf "$base"' EXIT
name=
failures=0

# Known from the sleep of any other run.
export FAKE_SLEEP=1000.$$

# Each check starts with an empty cache and tools that all work.
begin()
{
    name=$1
    rm -rf "$base"/{fakes,cache,temporary,checkout}
    mkdir -p "$base"/{fakes,cache,temporary,checkout}
    cp -r "$checkout"/{scripts,cmake,patches} "$base/checkout"
    echo 6.4.2+dfsg-10 >"$base/fakes/qt-version"
    echo 12.2.0-14 >"$base/fakes/compiler-version"
    echo 50000 >"$base/fakes/free-space"
    cache=$base/cache
    script=$(find "$base/checkout/scripts" -name build-qt-for-windows)
}

# The environment of all runs; the exit code is left in $status, what was said in said.log.
in_fake_world()
{
    exec env PATH="$base/bin:$PATH" FAKES="$base/fakes" XDG_CACHE_HOME="$cache" \
        TMPDIR="$base/temporary" "$@"
}

run()
{
    status=0
    (in_fake_world "$script") >"$base/printed.log" 2>"$base/said.log" || status=$?
}

check()
{
    if ! eval "$1"; then
        failures=$((failures + 1))
        printf 'FAIL %s: %s (exit code %s)\n' "$name" "$1" "$status"
        sed 's/^/    /' "$base/said.log"
    fi
}

printed() { cat "$base/printed.log"; }
says() { grep -qF -- "$1" "$base/said.log"; }
calls() { grep -c "^$1" "$base/fakes/calls" || true; }
work_folder() { echo "$cache/quorvel/qt-windows-work"; }

wait_until()
{
    local attempts=1200
    until "$@"; do
        ((attempts-- > 0)) || return 1
        sleep 0.05
    done
}

builds_once()
{
    begin 'builds once'
    run
    check '((status == 0)) && [[ -f $(printed)/bin/Qt6Core.dll ]]'
    check '[[ $(wc -l <"$base/printed.log") == 1 && $(printed) == "$cache"/quorvel/qt-windows-6.4.2-* ]]'
    check '[[ -f $(printed)/share/licences/Plain.txt && -f $(printed)/share/built-from.txt ]]'
    check '! grep -r /elsewhere "$(printed)"'
    check '! grep -rF "$base" "$(printed)"'
    check '[[ ! -e $(work_folder) ]]'
    local built
    built=$(printed)
    run
    check '((status == 0)) && [[ $(printed) == "$built" && $(calls ninja) == 1 ]]'
}

# fails_at TOOL LOG WORDS...: says so, names the log, and goes on from there once it works.
fails_at()
{
    local tool=$1 log=$2
    begin "$tool fails"
    echo "the trouble with $tool" >"$base/fakes/$tool.fails"
    run
    check '((status != 0)) && [[ ! -s $base/printed.log ]]'
    check "says 'the trouble with $tool'"
    check "says 'build-qt-for-windows: ' && says \"$3\""
    check "[[ -f \$(work_folder)/logs/$log ]] && says \"\$(work_folder)/logs/$log\""
    rm "$base/fakes/$tool.fails"
    : >"$base/fakes/calls"
    run
    check '((status == 0)) && [[ -d $(printed) ]] && says "Going on"'
}

says_what_failed()
{
    fails_at apt-get-source fetch.log 'cannot fetch'
    fails_at ninja build.log 'does not build'
    check '[[ $(calls "cmake -G") == 0 && $(calls ninja) == 1 ]]'
}

resumes_after_an_interruption()
{
    begin 'resumes after an interruption'
    touch "$base/fakes/ninja.hangs"
    # Without job control a background command would ignore SIGINT.
    set -m
    in_fake_world "$script" \
        >"$base/printed.log" 2>"$base/said.log" &
    set +m
    check "wait_until test -e '$base/fakes/ninja.hanging'"
    kill -INT "$!"
    status=0
    wait "$!" || status=$?
    check '((status == 130)) && says Interrupted'
    check '! pgrep -f "sleep $FAKE_SLEEP\$" >/dev/null'
    rm "$base/fakes/ninja.hangs"
    : >"$base/fakes/calls"
    run
    check '((status == 0)) && [[ -d $(printed) ]] && says "Going on"'
    check '[[ $(calls dpkg-source) == 0 && $(calls "cmake -G") == 0 && $(calls ninja) == 1 ]]'
}

path_now() { (in_fake_world "$script" --path 2>/dev/null); }

is_named_after_what_it_is_made_of()
{
    begin 'is named after what it is made of'
    local before after file
    before=$(path_now)
    check '[[ $before == "$cache"/quorvel/qt-windows-6.4.2-* && ! -e $before && $(calls ninja) == 0 ]]'
    echo '# Words for the reader.' >>"$script"
    check '[[ $(path_now) == "$before" ]]'
    echo 6.4.2+dfsg-11 >"$base/fakes/qt-version"
    after=$(path_now)
    check '[[ $after != "$before" ]]'
    before=$after
    echo 12.2.0-15 >"$base/fakes/compiler-version"
    after=$(path_now)
    check '[[ $after != "$before" ]]'
    for file in "$base"/checkout/cmake/{qt-for-windows,windows-toolchain}.cmake \
        "$(dirname "$script")/qt-for-windows-recipe"; do
        before=$after
        echo '# More.' >>"$file"
        after=$(path_now)
        check '[[ $after != "$before" ]]'
    done
    before=$after
    write_patch
    check '[[ $(path_now) != "$before" ]]'
}

# A patch of a line that the fake source package has.
write_patch()
{
    cat >"$base/checkout/patches/qt/plain.patch" <<'PATCH'
--- a/LICENSES/Plain.txt
+++ b/LICENSES/Plain.txt
@@ -0,0 +1 @@
+patched
PATCH
}

applies_patches()
{
    begin 'applies patches'
    write_patch
    run
    check '((status == 0)) && [[ $(cat "$(printed)/share/licences/Plain.txt") == patched ]]'
    begin 'ends at a patch that does not apply'
    write_patch
    sed -i 's/^@@.*/@@ -1 +1 @@\n-other/' "$base/checkout/patches/qt/plain.patch"
    run
    check '((status != 0)) && says "cannot unpack" && [[ $(calls "cmake -G") == 0 ]]'
}

starts_afresh_for_another_version()
{
    begin 'starts afresh for another version'
    touch "$base/fakes/ninja.fails"
    run
    echo 6.4.2+dfsg-11 >"$base/fakes/qt-version"
    rm "$base/fakes/ninja.fails"
    : >"$base/fakes/calls"
    run
    check '((status == 0)) && ! says "Going on" && [[ $(calls dpkg-source) == 1 ]]'
    local older
    older=$(printed)
    echo 6.4.2+dfsg-12 >"$base/fakes/qt-version"
    run
    check '((status == 0)) && says "free to be removed: $older"'
}

# A full stop in the middle, without any signal that could be heard.
does_not_trust_half_a_source()
{
    begin 'does not trust half a source'
    touch "$base/fakes/dpkg-source.hangs"
    in_fake_world setsid "$script" \
        >"$base/printed.log" 2>"$base/said.log" &
    check "wait_until test -e '$base/fakes/dpkg-source.hanging'"
    local pid=$!
    check "wait_until kill_session '$pid'"
    wait "$pid" 2>/dev/null || true
    rm "$base/fakes/dpkg-source.hangs"
    run
    check '((status == 0)) && [[ -f $(printed)/share/licences/Plain.txt ]]'
}

# Succeeds when nobody of the session is left to kill.
kill_session() { ! pkill -KILL -s "$1"; }

waits_for_another_build()
{
    begin 'waits for another build'
    mkdir -p "$cache/quorvel"
    exec 8>"$cache/quorvel/qt-windows.lock"
    flock 8
    in_fake_world "$script" \
        >"$base/printed.log" 2>"$base/said.log" 8>&- &
    check 'wait_until says "waiting for it"'
    exec 8>&-
    status=0
    wait "$!" || status=$?
    check '((status == 0)) && [[ -d $(printed) ]]'
}

stands_any_path()
{
    begin 'stands any path'
    cache="$base/Quorvel Prüfung 面板/cache"
    mkdir -p "$cache"
    mv "$base/checkout" "$base/a checkout 面板"
    ln -s "$base/a checkout 面板" "$base/checkout"
    run
    check '((status == 0)) && [[ $(printed) == "$cache"/* && -f $(printed)/bin/Qt6Core.dll ]]'
    check '! grep -E "^(cmake|ninja).*面板" "$base/fakes/calls"'
    check '[[ -z $(ls -A "$base/temporary") ]]'
    rm -rf "$base/a checkout 面板" "$base/checkout"
}

# Reading the pipe would never end.
reads_nothing_of_others()
{
    begin 'reads nothing of others'
    cache="$base/cache 面板"
    mkdir -p "$cache" "$base/temporary/others"
    mkfifo "$base/temporary/others/key"
    ln -s others "$base/temporary/quorvel-qt-windows-$UID"
    status=0
    (in_fake_world timeout 60 "$script") >"$base/printed.log" 2>"$base/said.log" || status=$?
    check '((status == 0)) && [[ -d $(printed) && $(ls -A "$base/temporary") == others ]]'
    rm -rf "$cache"
}

write_fakes "$base/bin"
status=0
builds_once
says_what_failed
resumes_after_an_interruption
is_named_after_what_it_is_made_of
applies_patches
starts_afresh_for_another_version
does_not_trust_half_a_source
waits_for_another_build
stands_any_path
reads_nothing_of_others
((failures == 0)) || exit 1
echo "build-qt-for-windows: all checks passed"
