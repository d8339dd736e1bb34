# A private Windows to run the program in. Needs common.sh.
# shellcheck shell=bash

# use_wine FOLDER: all later calls, and every wine command, mean the Windows in that folder.
use_wine()
{
    export WINEPREFIX=$1 WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
    # Neither Mono nor Gecko is needed; without this Wine would offer to fetch them. The menu
    # builder would write entries into the user's own desktop.
    export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
    # Debian 13's Wine crashes where this is set. All find their server in /tmp then.
    unset TMPDIR
}

# wine_recipe: all that decides what a private Windows is like.
wine_recipe()
{
    wine --version
    cat "$root/scripts/lib/wine.sh"
}

# make_wine_once: makes the Windows when it is not there yet or was made in another way. It does
# not run afterwards.
make_wine_once()
{
    wine_recipe | cmp --silent - "$WINEPREFIX/quorvel-ready" || make_wine
}

make_wine()
{
    local making=$WINEPREFIX/quorvel-making
    # What an interrupted attempt left is thrown away; a folder of somebody else's never is.
    [[ -e $making || -e $WINEPREFIX/quorvel-ready || -z $(ls -A -- "$WINEPREFIX" 2>/dev/null) ]] ||
        die "$WINEPREFIX is not empty; name a folder that the private Windows may have for itself"
    note "Making a private Windows in $WINEPREFIX"
    rm -rf -- "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    : >"$making"
    quietly wine wineboot --init
    # Wine hides variables whose names begin with QT_ from Windows programs; these come from the
    # registry. Qt without a screen looks for fonts in its own folder, where there are none.
    quietly wine reg add 'HKCU\Environment' /v QT_FORCE_STDERR_LOGGING /d 1 /f
    quietly wine reg add 'HKCU\Environment' /v QT_QPA_FONTDIR \
        /d 'Z:\usr\share\fonts\truetype\dejavu' /f
    # Without a display windows can be made all the same; they only are not shown.
    quietly wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d x11,null /f
    quietly wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
    # What Qt 6 needs; Debian's default is Windows 7.
    quietly wine winecfg -v win10
    # In its very first session the service manager stays locked: no driver starts.
    stop_wine
    # Copies share them.
    find "$WINEPREFIX/drive_c/windows" -name '*.dll' -exec chmod a-w {} +
    wine_recipe >"$making"
    mv "$making" "$WINEPREFIX/quorvel-ready"
}

quietly()
{
    "$@" >/dev/null 2>&1 || die "'$*' failed in $WINEPREFIX"
}

# copy_wine FROM TO: makes the Windows in TO a copy of the one in FROM, which must not run.
copy_wine()
{
    rm -rf -- "$2"
    mkdir -p "$2"
    # The libraries of Windows itself, 600 of its 700 MB, are the same files in both: nothing may
    # write them. All else is a copy, so that no run reaches another.
    tar -C "$1" --exclude='./drive_c/windows/*.dll' --create --file=- . | tar -C "$2" --extract --file=-
    (cd "$1" && find drive_c/windows -name '*.dll' -exec cp --link --parents -t "$2" {} +)
}

# keep_wine_running: lets the Windows run until stop_wine, or until scripts/contain ends it, so that
# loaded drivers stay loaded between commands.
keep_wine_running()
{
    # Debian's wineserver command ends with the last program, whatever it is told.
    local server=/usr/lib/wine/wineserver64
    [[ -x $server ]] || server=wineserver
    # Status 2 says that it runs already.
    local status=0
    "$server" --persistent || status=$?
    ((status == 0 || status == 2)) || die "the Wine server does not start"
}

stop_wine()
{
    wineserver --kill 2>/dev/null || true
    wineserver --wait 2>/dev/null || true
    # It leaves a folder behind, named after the prefix's device and number.
    local device number
    read -r device number < <(stat --format='%D %i' -- "$WINEPREFIX")
    rm -rf -- "/tmp/.wine-$UID/server-$device-$(printf '%x' "$number")"
}

# load_driver FILE NAME: starts FILE as the kernel-mode driver NAME; a driver of that name that
# already runs is replaced.
load_driver()
{
    local file=$1 name=$2
    unload_driver "$name"
    cp --remove-destination -- "$file" "$WINEPREFIX/drive_c/windows/system32/drivers/$name.sys"
    quietly wine sc create "$name" type= kernel start= demand \
        binPath= "C:\\windows\\system32\\drivers\\$name.sys"
    quietly wine net start "$name"
}

unload_driver()
{
    wine sc query "$1" >/dev/null 2>&1 || return 0
    wine net stop "$1" >/dev/null 2>&1 || true
    quietly wine sc delete "$1"
}

# use_utf8: has Wine take file names as UTF-8, whatever the language here; in the old "C" it would
# lose all but ASCII.
use_utf8()
{
    [[ $(locale charmap 2>/dev/null) == UTF-8 ]] || export LC_ALL=C.UTF-8
}

# use_qt SDK FOLDER: lets the programs in FOLDER find Qt, its plug-ins and the compiler's own
# libraries where they lie. Drive Z: is the whole file system.
use_qt()
{
    local path="Z:$1/bin" library
    for library in libstdc++-6.dll libwinpthread-1.dll; do
        path+=";Z:$(dirname -- "$(realpath "$(x86_64-w64-mingw32-g++-posix \
            -print-file-name=$library)")")"
    done
    export WINEPATH=$path
    printf '[Paths]\nPlugins = Z:%s/plugins\n' "$1" >"$2/qt.conf"
}
