# The configuration of Qt for Windows (an initial cache, for `cmake -C`): Core, Gui, Widgets and
# Test with what the control panel and its tests use, little else. The SDK is named after this
# file's text, so that any change here builds Qt again.

set(CMAKE_BUILD_TYPE Release CACHE STRING "")
set(BUILD_SHARED_LIBS ON CACHE BOOL "")
set(QT_BUILD_TESTS OFF CACHE BOOL "")
set(QT_BUILD_EXAMPLES OFF CACHE BOOL "")

# Without the second one Qt6HostInfo is not found in Debian's layout.
set(QT_HOST_PATH /usr CACHE PATH "")
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake CACHE PATH "")

# Whole libraries, and what the tools for other systems would want.
set(unused_parts
    network sql dbus xml printsupport concurrent
    opengl vulkan
    icu glib zstd pkg_config
    qmake androiddeployqt)

# tabletevent: the source package carries no wintab. mimetype_database: it is packed with the
# time of the packing, so that no two builds would be the same.
# direct2d1_1 is the platform plug-in of that name. direct2d itself stays on: the Windows
# platform plug-in does not link without the font database it brings.
set(unused_in_core_and_gui
    mimetype_database timezone jalalicalendar hijricalendar
    filesystemwatcher proxymodel
    cborstreamwriter
    tabletevent direct2d1_1
    gif jpeg imageformat_ppm imageformat_xbm movie picture pdf
    textmarkdownreader textmarkdownwriter textodfwriter
    filesystemmodel undocommand)

# These stay on: textedit, as style sheets crash without it (a function that ends in `else`), and
# inputdialog, tableview, treeview, tabwidget and commandlinkbutton, without which one style of
# Windows or the other does not compile.
set(unused_widgets
    scroller rubberband
    textbrowser syntaxhighlighter
    columnview datawidgetmapper listwidget tablewidget treewidget completer
    calendarwidget fontcombobox keysequenceedit lcdnumber dial
    splashscreen splitter toolbox
    mdiarea dockwidget
    colordialog filedialog fontdialog errormessage progressdialog wizard)

foreach(feature IN LISTS unused_parts unused_in_core_and_gui unused_widgets)
    set(FEATURE_${feature} OFF CACHE BOOL "")
endforeach()
set(INPUT_opengl no CACHE STRING "")

# The host's libraries are of no use to a Windows program.
foreach(library zlib png jpeg pcre2 freetype harfbuzz doubleconversion)
    set(FEATURE_system_${library} OFF CACHE BOOL "")
endforeach()
