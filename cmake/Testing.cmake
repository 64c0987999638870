# GoogleTest is built here from Debian's source, because its wide assertions must use 16-bit characters.

include(GoogleTest)

set(BUILD_GMOCK ON)
set(INSTALL_GTEST OFF)
add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
foreach(library gtest gtest_main gmock gmock_main)
    target_link_libraries(${library} PUBLIC qx_text_model)
    target_compile_options(${library} PRIVATE -w)
    if(WIN32)
        target_link_options(${library} INTERFACE -static)
    else()
        target_link_libraries(${library} PUBLIC qxcrt)
    endif()
endforeach()

# GoogleTest's headers take longer to compile than most tests, so they are precompiled once for all programs.
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/test_headers.cpp" CONTENT "int main() { return 0; }\n")
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/test_headers_c.c" CONTENT "extern int qx_test_headers;\n")
add_executable(qx_test_headers EXCLUDE_FROM_ALL
    "${CMAKE_BINARY_DIR}/test_headers.cpp" "${CMAKE_BINARY_DIR}/test_headers_c.c")
target_compile_options(qx_test_headers PRIVATE -O0 -g1)
target_link_libraries(qx_test_headers PRIVATE qx_options gmock)
target_precompile_headers(qx_test_headers PRIVATE
    "$<$<COMPILE_LANGUAGE:CXX>:<gmock/gmock.h$<ANGLE-R>>"
    "$<$<COMPILE_LANGUAGE:CXX>:<gtest/gtest.h$<ANGLE-R>>"
    "$<$<COMPILE_LANGUAGE:C>:<stddef.h$<ANGLE-R>>")

# qx_add_test(NAME program [SEPARATE] [APART] [USES_DATA] [LOCK name] SOURCES ... [LINKS ...] [DEPENDS ...]): adds a GoogleTest
# program and registers its test cases with ctest. In the emulator, where a process takes half a second to start, all
# cases of a program run in one process and are one test, unless they are SEPARATE because a case may damage its process.
# A program that is APART is in a folder where it doesn't find the control library, alone with a copy of the layer.
# Programs with the same LOCK don't run at the same time, because they share a resource of the system. USES_DATA defines
# QXUT_TEST_DATA as the path of tests/data; other programs contain no paths, so that a compiler cache can serve several
# trees. Each test is labelled with its program.
function(qx_add_test)
    cmake_parse_arguments(ARG "SEPARATE;APART;USES_DATA" "NAME;LOCK" "SOURCES;LINKS;DEPENDS" ${ARGN})
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    target_include_directories(${ARG_NAME} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
    # Each test runs once, so compile time matters more than run time.
    target_compile_options(${ARG_NAME} PRIVATE -O0 -g1)
    target_precompile_headers(${ARG_NAME} REUSE_FROM qx_test_headers)
    if(ARG_USES_DATA)
        target_compile_definitions(${ARG_NAME} PRIVATE QXUT_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data")
    endif()
    target_link_libraries(${ARG_NAME} PRIVATE qx_options ${ARG_LINKS} gmock gtest_main)
    qx_compile_folders(${ARG_NAME})
    if(ARG_APART)
        set_target_properties(${ARG_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/apart")
        if(NOT WIN32)
            add_custom_command(TARGET ${ARG_NAME} POST_BUILD COMMAND ${CMAKE_COMMAND} -E copy_if_different
                "$<TARGET_FILE:qxplatform>" "${CMAKE_BINARY_DIR}/apart/$<TARGET_SONAME_FILE_NAME:qxplatform>")
        endif()
    endif()
    if(ARG_DEPENDS)
        add_dependencies(${ARG_NAME} ${ARG_DEPENDS})
    endif()
    # Tests must not change the settings of the user who runs them. Tests that change settings use a folder of their own.
    set(properties TIMEOUT 240 LABELS ${ARG_NAME} ENVIRONMENT "QXPLATFORM_HOME=${CMAKE_BINARY_DIR}/test-home")
    if(ARG_LOCK)
        list(APPEND properties RESOURCE_LOCK "${ARG_LOCK}")
    endif()
    if(WIN32 AND NOT ARG_SEPARATE)
        add_test(NAME ${ARG_NAME} COMMAND ${ARG_NAME})
        set_tests_properties(${ARG_NAME} PROPERTIES ${properties})
    else()
        gtest_discover_tests(${ARG_NAME} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120 PROPERTIES ${properties})
    endif()
endfunction()
