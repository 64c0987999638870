# GoogleTest is built here from Debian's source, because its wide assertions must have the 16-bit
# character of this tree.

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

# qx_add_test(NAME program [USES_DATA] [LOCK name] SOURCES ... [LINKS ...] [DEPENDS ...]): a GoogleTest program whose cases are ctest's tests.
# Programs with the same LOCK don't run at the same time: they share what the system has but one of.
# With USES_DATA the sources know tests/data as
# QXUT_TEST_DATA; the others stay free of paths, so that a compiler cache serves several trees. The label of each test is
# its program.
function(qx_add_test)
    cmake_parse_arguments(ARG "USES_DATA" "NAME;LOCK" "SOURCES;LINKS;DEPENDS" ${ARGN})
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    target_include_directories(${ARG_NAME} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
    # A test runs once: the compiler's time is what it costs.
    target_compile_options(${ARG_NAME} PRIVATE -O0 -g1)
    if(ARG_USES_DATA)
        target_compile_definitions(${ARG_NAME} PRIVATE QXUT_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data")
    endif()
    target_link_libraries(${ARG_NAME} PRIVATE qx_options ${ARG_LINKS} gmock gtest_main)
    if(ARG_DEPENDS)
        add_dependencies(${ARG_NAME} ${ARG_DEPENDS})
    endif()
    gtest_discover_tests(${ARG_NAME} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120 PROPERTIES
        TIMEOUT 240
        LABELS ${ARG_NAME}
        RESOURCE_LOCK "${ARG_LOCK}"
        # No test touches the settings of the one who runs it; those that change settings choose a folder of their own.
        ENVIRONMENT "QXPLATFORM_HOME=${CMAKE_BINARY_DIR}/test-home")
endfunction()
