# Moves the debug information of the installed files into separate files, so that the installed files stay small. Runs
# during installation, with QX_FILES (paths below the prefix), QX_OBJCOPY, QX_READELF and QX_WINDOWS set. For ELF the
# separate files are lib/debug/.build-id/xx/yyy.debug, where debuggers find them through the build id; for windows
# NAME.debug next to NAME.

foreach(name IN LISTS QX_FILES)
    set(file "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${name}")
    if(QX_WINDOWS)
        set(debug "${file}.debug")
        set(link "--add-gnu-debuglink=${debug}")
    else()
        execute_process(COMMAND "${QX_READELF}" -n "${file}" OUTPUT_VARIABLE notes COMMAND_ERROR_IS_FATAL ANY)
        if(NOT notes MATCHES "Build ID: ([0-9a-f][0-9a-f])([0-9a-f]+)")
            message(FATAL_ERROR "${file} has no build id")
        endif()
        set(debug "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/lib/debug/.build-id/${CMAKE_MATCH_1}/${CMAKE_MATCH_2}.debug")
        set(link "")
        cmake_path(GET debug PARENT_PATH folder)
        file(MAKE_DIRECTORY "${folder}")
    endif()
    execute_process(COMMAND "${QX_OBJCOPY}" --only-keep-debug "${file}" "${debug}" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND "${QX_OBJCOPY}" --strip-unneeded ${link} "${file}" COMMAND_ERROR_IS_FATAL ANY)
    message(STATUS "Debug information: ${debug}")
endforeach()
