# Third-party libraries, as CMake targets with the same names on both targets. For windows they come from QXUT_DEPS_DIR,
# where scripts/setup cross-builds them from Debian's sources.

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

if(WIN32)
    set(QXUT_DEPS_DIR "${CMAKE_SOURCE_DIR}/build/deps/windows" CACHE PATH "Cross-built dependencies")

    function(qx_static_dependency name archive)
        find_library(${name}_ARCHIVE NAMES ${archive} REQUIRED PATHS "${QXUT_DEPS_DIR}/lib" NO_CMAKE_FIND_ROOT_PATH)
        add_library(qx::${name} STATIC IMPORTED)
        set_target_properties(qx::${name} PROPERTIES
            IMPORTED_LOCATION "${${name}_ARCHIVE}"
            INTERFACE_INCLUDE_DIRECTORIES "${QXUT_DEPS_DIR}/include")
    endfunction()

    qx_static_dependency(pcre2 libpcre2-16.a)
    qx_static_dependency(minizip libminizip.a)
    target_compile_definitions(qx::pcre2 INTERFACE PCRE2_STATIC)

    # The plain name would match the import library of a zlib DLL, which Windows doesn't have.
    find_library(ZLIB_ARCHIVE NAMES libz.a REQUIRED)
    add_library(qx::zlib STATIC IMPORTED)
    set_target_properties(qx::zlib PROPERTIES IMPORTED_LOCATION "${ZLIB_ARCHIVE}")
    target_link_libraries(qx::minizip INTERFACE qx::zlib)
else()
    find_package(PkgConfig REQUIRED)
    find_package(ZLIB REQUIRED)
    find_package(ICU REQUIRED COMPONENTS uc i18n data)
    pkg_check_modules(pcre2 REQUIRED IMPORTED_TARGET libpcre2-16)
    pkg_check_modules(minizip REQUIRED IMPORTED_TARGET minizip)
    add_library(qx::pcre2 ALIAS PkgConfig::pcre2)
    add_library(qx::minizip ALIAS PkgConfig::minizip)
    add_library(qx::zlib ALIAS ZLIB::ZLIB)
endif()
