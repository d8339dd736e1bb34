# The configuration of Qt for Windows (an initial cache, for `cmake -C`):
# Core, Gui, Widgets and Test with what the control panel needs, nothing else.

set(CMAKE_BUILD_TYPE Release CACHE STRING "")
set(BUILD_SHARED_LIBS ON CACHE BOOL "")
set(QT_BUILD_TESTS OFF CACHE BOOL "")
set(QT_BUILD_EXAMPLES OFF CACHE BOOL "")

# Without the second one Qt6HostInfo is not found in Debian's layout.
set(QT_HOST_PATH /usr CACHE PATH "")
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake CACHE PATH "")

# tabletevent: the source package carries no wintab. mimetype_database: it is
# packed with the time of the packing, so that no two builds would be the same.
# direct2d stays on: the Windows platform plug-in does not link without the font
# database it brings.
foreach(feature
        network sql dbus xml printsupport concurrent
        opengl vulkan tabletevent
        icu glib zstd pkg_config mimetype_database
        gif jpeg pdf
        qmake androiddeployqt)
    set(FEATURE_${feature} OFF CACHE BOOL "")
endforeach()
set(INPUT_opengl no CACHE STRING "")

# The host's libraries are of no use to a Windows program.
foreach(library zlib png jpeg pcre2 freetype harfbuzz doubleconversion)
    set(FEATURE_system_${library} OFF CACHE BOOL "")
endforeach()
