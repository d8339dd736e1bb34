# Stand-ins for what build-qt-for-windows calls, written into the folder $1. Each call is noted in
# $FAKES/calls. A file $FAKES/TOOL.fails makes the tool print that file and fail; a file
# $FAKES/TOOL.hangs makes it stand still, with a child of its own.
# shellcheck shell=bash

write_fake()
{
    cat >"$fake_bin/$1" <<'FAKE'
#!/usr/bin/env bash
set -e
tool=$(basename "$0")
printf '%s\n' "$tool $*" >>"$FAKES/calls"
obey()
{
    if [[ -e $FAKES/$1.fails ]]; then
        cat "$FAKES/$1.fails"
        exit 9
    fi
    if [[ -e $FAKES/$1.hangs ]]; then
        sleep "$FAKE_SLEEP" &
        touch "$FAKES/$1.hanging"
        wait
    fi
}
FAKE
    cat >>"$fake_bin/$1"
    chmod +x "$fake_bin/$1"
}

write_fakes()
{
    local fake_bin=$1
    mkdir -p "$fake_bin"
    write_fake dpkg-query <<'FAKE'
for argument in "$@"; do
    case $argument in
        -*) format=${argument#-f=} ;;
        '${'*) format=$argument ;;
        *)
            line=${format//'${Package}'/$argument}
            line=${line//'${db:Status-Status}'/installed}
            line=${line//'${source:Version}'/$(cat "$FAKES/qt-version")}
            line=${line//'${Version}'/$(cat "$FAKES/compiler-version")}
            printf '%b' "$line"
            ;;
    esac
done
FAKE
    write_fake apt-get <<'FAKE'
case " $* " in
    *' update '*) obey apt-get-update ;;
    *' source '*)
        obey apt-get-source
        touch qt6-base.dsc
        ;;
esac
FAKE
    write_fake apt-cache <<'FAKE'
obey apt-cache
echo "Version: $(cat "$FAKES/qt-version")"
FAKE
    # Unpacks a part before it obeys, so that a failure leaves half a source behind.
    write_fake dpkg-source <<'FAKE'
mkdir -p unpacking/{debian,src/{plugins/platforms,platformsupport,3rdparty/harfbuzz-ng}}
obey dpkg-source
echo 'add_subdirectory(minimal)' >unpacking/src/plugins/platforms/CMakeLists.txt
echo 'add_subdirectory(fbconvenience)' >unpacking/src/platformsupport/CMakeLists.txt
touch unpacking/src/3rdparty/harfbuzz-ng/CMakeLists.txt
mkdir unpacking/LICENSES
touch unpacking/LICENSES/Plain.txt unpacking/debian/copyright unpacking/debian/changelog
FAKE
    write_fake dpkg-parsechangelog <<'FAKE'
echo 1234567890
FAKE
    write_fake cmake <<'FAKE'
if [[ $1 == --install ]]; then
    obey cmake-install
    cp -r "$2/result" "$DESTDIR.new"
    mkdir -p "$DESTDIR"
    mv "$DESTDIR.new" "$DESTDIR/qt"
else
    obey cmake
    while [[ $1 != -B ]]; do shift; done
    mkdir "$2"
fi
FAKE
    write_fake ninja <<'FAKE'
mkdir -p "$2"/result/{bin,plugins/{platforms,styles,imageformats},lib/cmake/Qt6,mkspecs}
echo '[1/2] Building CXX object one'
obey ninja
touch "$2"/result/bin/Qt6{Core,Gui,Widgets,Test}.dll \
    "$2"/result/plugins/platforms/q{windows,offscreen}.dll \
    "$2"/result/plugins/styles/qwindowsvistastyle.dll "$2"/result/plugins/imageformats/qico.dll
echo 'set(__qt_initially_configured_toolchain_file "/elsewhere")' \
    >"$2/result/lib/cmake/Qt6/qt.toolchain.cmake"
echo '[2/2] Linking CXX shared library two'
FAKE
    write_fake df <<'FAKE'
printf 'Avail\n%s\n' "$(cat "$FAKES/free-space")"
FAKE
}
