# cmake --install installs the library with its public headers, the control library, the program, a CMake package and a
# pkg-config file. On linux it also installs the layer, with its headers in a separate folder, for callers that use
# streams and variants.

include(CMakePackageConfigHelpers)

install(TARGETS qxUT23 EXPORT qxUT23Targets)
install(TARGETS qxct23 RUNTIME LIBRARY NAMELINK_SKIP) # loaded at run time only
install(TARGETS qxut)
install(DIRECTORY include/qxut23 DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" FILES_MATCHING PATTERN "*.h")

# The path from the pkg-config files to the prefix is relative, so that an installed tree can be moved.
file(RELATIVE_PATH QXUT_PREFIX_FROM_PC "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
set(packages qxut23)
set(QXUT_SYSTEM_LIBRARY -loleaut32)

if(NOT WIN32)
    install(TARGETS qxplatform qxcrt EXPORT qxUT23Targets)
    install(TARGETS qxdbghelp LIBRARY NAMELINK_SKIP) # loaded at run time only
    install(DIRECTORY platform/include/ DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/qxplatform" FILES_MATCHING PATTERN "*.h")
    list(APPEND packages qxplatform)
    set(QXUT_SYSTEM_LIBRARY -lqxplatform)
endif()

# Not for sanitizer builds, because their reports need the debug information that stripping removes.
if(NOT QXUT_SANITIZE)
    set(split_files "${CMAKE_INSTALL_BINDIR}/$<TARGET_FILE_NAME:qxut>")
    if(WIN32)
        list(APPEND split_files
            "${CMAKE_INSTALL_BINDIR}/$<TARGET_FILE_NAME:qxUT23>" "${CMAKE_INSTALL_BINDIR}/$<TARGET_FILE_NAME:qxct23>")
    else()
        list(APPEND split_files
            "${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:qxUT23>" "${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:qxplatform>"
            "${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:qxdbghelp>" "${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:qxct23>")
    endif()
    install(CODE "
        set(QX_FILES \"${split_files}\")
        set(QX_OBJCOPY \"${CMAKE_OBJCOPY}\")
        set(QX_READELF \"${CMAKE_READELF}\")
        set(QX_WINDOWS \"${WIN32}\")")
    install(SCRIPT cmake/SplitDebug.cmake)
endif()

foreach(package IN LISTS packages)
    configure_file("cmake/${package}.pc.in" "${CMAKE_BINARY_DIR}/${package}.pc" @ONLY)
    install(FILES "${CMAKE_BINARY_DIR}/${package}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endforeach()

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/qxUT23")
install(EXPORT qxUT23Targets NAMESPACE qxUT23:: DESTINATION "${package_folder}" FILE qxUT23Config.cmake)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/qxUT23ConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_BINARY_DIR}/qxUT23ConfigVersion.cmake" DESTINATION "${package_folder}")

install(FILES LICENSE THIRD-PARTY.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
