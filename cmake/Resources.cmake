# qx_add_resources(TARGET SCRIPT.rc [DEPENDS FILE...]): compiles a resource script and links it into the target: on
# windows as usual, for ELF as a note in the image, which the layer's resource functions read. DEPENDS lists the files
# that the script includes.

if(WIN32)
    enable_language(RC)
else()
    find_program(QX_WINDRES NAMES x86_64-w64-mingw32-windres REQUIRED)
endif()

function(qx_add_resources target script)
    cmake_parse_arguments(PARSE_ARGV 2 ARG "" "" "DEPENDS")
    get_filename_component(script "${script}" ABSOLUTE)
    if(WIN32)
        target_sources(${target} PRIVATE "${script}")
        set_source_files_properties("${script}" PROPERTIES OBJECT_DEPENDS "${ARG_DEPENDS}")
        return()
    endif()
    get_filename_component(QX_RESOURCE_NAME "${script}" NAME)
    set(base "${CMAKE_CURRENT_BINARY_DIR}/${target}_${QX_RESOURCE_NAME}")
    set(QX_RESOURCE_FILE "${base}.res")
    add_custom_command(OUTPUT "${QX_RESOURCE_FILE}"
        COMMAND "${QX_WINDRES}" --preprocessor "${CMAKE_C_COMPILER}" --preprocessor-arg=-E --preprocessor-arg=-xc-header
            --preprocessor-arg=-DRC_INVOKED -I "${PROJECT_SOURCE_DIR}/platform/include" -O res -i "${script}" -o "${QX_RESOURCE_FILE}"
        DEPENDS "${script}" ${ARG_DEPENDS}
        VERBATIM)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/resource_note.c.in" "${base}.c" @ONLY)
    set_source_files_properties("${base}.c" PROPERTIES OBJECT_DEPENDS "${QX_RESOURCE_FILE}")
    target_sources(${target} PRIVATE "${base}.c" "${QX_RESOURCE_FILE}")
endfunction()
