# The options of every target of this tree, carried by one interface target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}")
# Programs and libraries find each other wherever the tree is put; so they do in the build folder, which has all of them
# in one place.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

# How characters are compiled: 16 bits on both targets. Apart from the warnings, because
# third-party code that is built here (GoogleTest) needs this and not those.
add_library(qx_text_model INTERFACE)
target_compile_definitions(qx_text_model INTERFACE UNICODE _UNICODE GTEST_HAS_STD_WSTRING=0)
if(WIN32)
    target_compile_definitions(qx_text_model INTERFACE _WIN32_WINNT=0x0A00 WINVER=0x0A00 NOMINMAX)
else()
    target_compile_options(qx_text_model INTERFACE -fshort-wchar)
endif()

# Apart from the text model for plain clients of the public headers, which do without it.
add_library(qx_client_options INTERFACE)
target_compile_options(qx_client_options INTERFACE
    -Wall -Wextra -Wshadow -Wconversion
    # Members that the system's own records leave to zero are meant to be zero.
    -Wno-missing-field-initializers
    # GetProcAddress gives one function type for all.
    -Wno-cast-function-type
    # What GCC sees at -O3 in inlined code of std::string and std::optional isn't there.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict;-Wno-maybe-uninitialized>
    # clang counts changes of sign among the conversions, gcc does not.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)
# Not -Wnon-virtual-dtor: COM's interfaces have no destructor in their table, on both targets, so every class that
# implements one would be warned about. What matters, deleting through a base, is in -Wall.
if(WIN32)
    target_link_options(qx_client_options INTERFACE -static)
    target_compile_options(qx_client_options INTERFACE
        -gdwarf-4) # the newest form that Wine's debug help reads
endif()

add_library(qx_options INTERFACE)
target_link_libraries(qx_options INTERFACE qx_text_model qx_client_options)

set(QXUT_SANITIZE "" CACHE STRING "Sanitizers for the whole tree, as in -fsanitize=")
if(QXUT_SANITIZE)
    # Without recovery, so that a finding fails the test in which it happens.
    add_compile_options(-fsanitize=${QXUT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QXUT_SANITIZE})
    # A COM object is known by the order of its slots. It may come from C, or from a module that does not share its type
    # information, which is what this one check would look at.
    add_compile_options(-fno-sanitize=vptr)
    # The sanitizers' code makes GCC see uses of optional values that are not there.
    add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
if(QXUT_BUILD_FUZZERS)
    # clang leaves the sanitizers' own functions to the program, so its libraries have undefined names.
    add_compile_options(-fsanitize=fuzzer-no-link)
    set(QX_NO_UNDEFINED "")
else()
    set(QX_NO_UNDEFINED LINKER:--no-undefined)
endif()

# Headers take most of a compiler's time. Where no single file is going to be compiled again, those of a folder are
# compiled as one unit; names that are local to a file are therefore unique within its folder. The target linux
# compiles each file for itself, and so shows whether it includes what it needs.
option(QXUT_COMPILE_FOLDERS "Compile the files of a folder as one unit" OFF)

# qx_compile_folders(target): to be called when the target has all of its sources.
function(qx_compile_folders target)
    if(NOT QXUT_COMPILE_FOLDERS)
        return()
    endif()
    get_target_property(sources ${target} SOURCES)
    get_target_property(base ${target} SOURCE_DIR)
    foreach(source ${sources})
        cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${base}")
        cmake_path(GET source PARENT_PATH folder)
        cmake_path(GET folder FILENAME folder)
        set_source_files_properties("${source}" TARGET_DIRECTORY ${target} PROPERTIES UNITY_GROUP ${folder})
    endforeach()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    # A file's own types look like a header's to the compiler, since the unit includes the file.
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
endfunction()
