# The compile and link options of all targets of this tree, provided as interface targets.

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
# Programs and libraries find each other relative to their own location, in an installed tree as well as in the build
# folder, where all of them are in one folder.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

# Character options: wchar_t has 16 bits on both targets. Separate from the warnings, because third-party code built
# here (GoogleTest) needs these options but not the warnings.
add_library(qx_text_model INTERFACE)
target_compile_definitions(qx_text_model INTERFACE UNICODE _UNICODE GTEST_HAS_STD_WSTRING=0)
if(WIN32)
    target_compile_definitions(qx_text_model INTERFACE _WIN32_WINNT=0x0A00 WINVER=0x0A00 NOMINMAX)
else()
    target_compile_options(qx_text_model INTERFACE -fshort-wchar)
endif()

# The warnings. Separate from the character options, which plain clients of the public headers don't need.
add_library(qx_client_options INTERFACE)
target_compile_options(qx_client_options INTERFACE
    -Wall -Wextra -Wshadow -Wconversion
    # Members omitted from initialisers of system structures are meant to be zero.
    -Wno-missing-field-initializers
    # GetProcAddress returns the same function type for all functions.
    -Wno-cast-function-type
    # False positives of GCC at -O3 in inlined code of std::string and std::optional.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict;-Wno-maybe-uninitialized>
    # clang includes sign conversions in -Wconversion, gcc doesn't.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)
# Not -Wnon-virtual-dtor: COM interfaces have no virtual destructor on either target, so every class that implements one
# would cause a warning. The important case, deletion through a base class, is covered by -Wall.
if(WIN32)
    target_link_options(qx_client_options INTERFACE -static)
    target_compile_options(qx_client_options INTERFACE
        -gdwarf-4) # the newest format that Wine's debug help supports
endif()

add_library(qx_options INTERFACE)
target_link_libraries(qx_options INTERFACE qx_text_model qx_client_options)

set(QXUT_SANITIZE "" CACHE STRING "Sanitizers for the whole tree, as in -fsanitize=")
if(QXUT_SANITIZE)
    # No recovery, so that a finding fails the test in which it occurs.
    add_compile_options(-fsanitize=${QXUT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QXUT_SANITIZE})
    # COM objects are identified only by the order of their slots. They may be written in C or come from a module with
    # separate type information, which this check doesn't accept.
    add_compile_options(-fno-sanitize=vptr)
    # A thread that ends in a callback is unwound by an exception without an object, which this check would report in
    # catch clauses. The address sanitizer detects null pointers that are used.
    add_compile_options(-fno-sanitize=null)
    # The sanitizers' instrumentation causes false warnings in GCC about optional values.
    add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
if(QXUT_BUILD_FUZZERS)
    # With clang, the functions of the sanitizers are defined by the program, so libraries have undefined symbols.
    add_compile_options(-fsanitize=fuzzer-no-link)
    set(QX_NO_UNDEFINED "")
else()
    set(QX_NO_UNDEFINED LINKER:--no-undefined)
endif()

# Most of the compile time is spent on headers. Builds that don't recompile single files compile all files of a folder
# as one unit. Names local to a file must therefore be unique in its folder. The linux target compiles each file
# separately, which detects missing includes.
option(QXUT_COMPILE_FOLDERS "Compile the files of a folder as one unit" OFF)

# qx_compile_folders(target): call this when all sources have been added to the target.
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
    # The unit includes the files, so GCC treats types local to a file like types from a header.
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
endfunction()
