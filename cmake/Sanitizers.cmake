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

if(sanitizer_flags)
    add_compile_options(${sanitizer_flags})
    add_link_options(${sanitizer_flags})
endif()
