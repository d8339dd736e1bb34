# QUORVEL_SANITIZE: empty, "address" (with undefined behaviour and leaks) or "thread".
set(QUORVEL_SANITIZE "" CACHE STRING "Sanitizer to build with: empty, address or thread")

if(QUORVEL_SANITIZE STREQUAL "address")
    set(sanitizer_flags -fsanitize=address,undefined,float-cast-overflow
        -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
elseif(QUORVEL_SANITIZE STREQUAL "thread")
    set(sanitizer_flags -fsanitize=thread -fno-omit-frame-pointer)
elseif(NOT QUORVEL_SANITIZE STREQUAL "")
    message(FATAL_ERROR "QUORVEL_SANITIZE is '${QUORVEL_SANITIZE}'; use address or thread.")
endif()

# Beside these, the compiler's own fuzzer, which only Clang has.
option(QUORVEL_FUZZ "Build the fuzz targets" OFF)
if(QUORVEL_FUZZ)
    list(APPEND sanitizer_flags -fsanitize=fuzzer-no-link)
endif()

if(sanitizer_flags)
    # Files and lines are what its reports tell; more takes longer to compile.
    add_compile_options(${sanitizer_flags} -g1)
    add_link_options(${sanitizer_flags})
endif()
