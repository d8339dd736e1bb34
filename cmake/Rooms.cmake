# Every target of ours is made by one of these functions, so that warnings,
# include root and language rules are the same everywhere.

function(quorvel_common target)
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4)
    else()
        target_compile_options(${target} PRIVATE
            -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
    endif()
    target_compile_definitions(${target} PRIVATE
        QT_NO_MESSAGELOGCONTEXT
        QT_NO_CAST_TO_ASCII
        QT_DISABLE_DEPRECATED_BEFORE=0x060400)
endfunction()

# quorvel_room(<name> SOURCES <files...> LINK <libraries...> [MOC])
# One static library per folder of src/; MOC for rooms with QObjects.
function(quorvel_room name)
    cmake_parse_arguments(ROOM "MOC" "" "SOURCES;LINK" ${ARGN})
    add_library(quorvel-${name} STATIC ${ROOM_SOURCES})
    quorvel_common(quorvel-${name})
    target_link_libraries(quorvel-${name} PUBLIC ${ROOM_LINK})
    if("Qt6::Widgets" IN_LIST ROOM_LINK)
        quorvel_precompiled_headers(quorvel-${name})
    endif()
    if(ROOM_MOC)
        set_target_properties(quorvel-${name} PROPERTIES AUTOMOC ON)
    endif()
endfunction()

# quorvel_program(<name> SOURCES <files...> LINK <libraries...> [MOC])
function(quorvel_program name)
    cmake_parse_arguments(PROGRAM "MOC" "" "SOURCES;LINK" ${ARGN})
    add_executable(${name} ${PROGRAM_SOURCES})
    quorvel_common(${name})
    target_link_libraries(${name} PRIVATE ${PROGRAM_LINK})
    if("Qt6::Widgets" IN_LIST PROGRAM_LINK)
        quorvel_precompiled_headers(${name})
    endif()
    if(PROGRAM_MOC)
        set_target_properties(${name} PROPERTIES AUTOMOC ON)
    endif()
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endfunction()
