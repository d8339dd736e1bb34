# Cross-compiles for 64-bit Windows with Debian's MinGW. Used twice: to build
# Qt for Windows, and (chained behind that Qt's own toolchain file) for the product.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# The -posix flavour brings std::thread and std::mutex.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Of what a program can do against its own mistakes this compiler has these; address space layout,
# data execution and relocations are the linker's own defaults. CET's marks are all it knows of
# control-flow guards.
foreach(language C CXX)
    set(CMAKE_${language}_FLAGS_INIT
        "-fstack-protector-strong -D_FORTIFY_SOURCE=2 -fcf-protection=full")
endforeach()

# A link time inside the files would make every build differ from the last.
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,--no-insert-timestamp")
endforeach()
