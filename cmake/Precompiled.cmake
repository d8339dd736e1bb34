# The toolkit's headers take longer to read than our own sources: whoever uses widgets shares them
# compiled. Not for the program alone, which is built sooner than they are read.
function(quorvel_precompiled_headers target)
    if(BUILD_TESTING)
        target_precompile_headers(${target} REUSE_FROM quorvel-precompiled)
        # Else the compiler cache leaves alone who uses them.
        target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
    endif()
endfunction()

if(BUILD_TESTING)
    file(CONFIGURE OUTPUT precompiled.cpp CONTENT "")
    add_library(quorvel-precompiled OBJECT ${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp)
    quorvel_common(quorvel-precompiled)
    target_link_libraries(quorvel-precompiled PRIVATE Qt6::Widgets)
    target_precompile_headers(quorvel-precompiled PRIVATE
        <QApplication>
        <QBoxLayout>
        <QByteArray>
        <QComboBox>
        <QDir>
        <QElapsedTimer>
        <QFile>
        <QImage>
        <QLabel>
        <QLineEdit>
        <QMouseEvent>
        <QPainter>
        <QProcess>
        <QStandardPaths>
        <QTemporaryDir>
        <QThread>
        <QTimer>
        <QWidget>
        <algorithm>
        <array>
        <chrono>
        <functional>
        <map>
        <memory>
        <string>
        <vector>)
endif()
