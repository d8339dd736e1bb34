# quorvel_windows_program(<target> ICON <file.ico>)
# Makes the target what Windows users expect: a program without a console, with icon, version
# and manifest. Does nothing for other systems.
function(quorvel_windows_program target)
    if(NOT WIN32)
        return()
    endif()
    cmake_parse_arguments(PROGRAM "" "ICON" "" ${ARGN})
    set(QUORVEL_ICON ${PROGRAM_ICON})
    set(QUORVEL_MANIFEST ${PROJECT_SOURCE_DIR}/src/app/windows/app.manifest)
    set(resources ${CMAKE_CURRENT_BINARY_DIR}/${target}-version.rc)
    configure_file(${PROJECT_SOURCE_DIR}/src/app/windows/version.rc.in ${resources} @ONLY)
    set_source_files_properties(${resources} PROPERTIES
        OBJECT_DEPENDS "${QUORVEL_ICON};${QUORVEL_MANIFEST}")
    target_sources(${target} PRIVATE ${resources})
    set_target_properties(${target} PROPERTIES WIN32_EXECUTABLE ON)
endfunction()
