# 64-bit ARM, built with Debian's cross compiler; the programs run under qemu-user. scripts/fetch-arm64-libraries
# unpacks the libraries they need into build/deps/linux-arm64.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(QXUT_TRIPLE aarch64-linux-gnu)
set(CMAKE_C_COMPILER ${QXUT_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${QXUT_TRIPLE}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${QXUT_TRIPLE})

cmake_path(SET QXUT_ARM64_ROOT NORMALIZE "${CMAKE_CURRENT_LIST_DIR}/../build/deps/linux-arm64")
set(CMAKE_FIND_ROOT_PATH "${QXUT_ARM64_ROOT}" /usr/${QXUT_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${QXUT_ARM64_ROOT}/usr/lib/${QXUT_TRIPLE}/pkgconfig")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${QXUT_ARM64_ROOT}")

# The folders in which the linker and the emulator find the dependencies of those libraries.
set(QXUT_ARM64_LIBRARIES "${QXUT_ARM64_ROOT}/usr/lib/${QXUT_TRIPLE}:${QXUT_ARM64_ROOT}/lib/${QXUT_TRIPLE}")
add_link_options("LINKER:-rpath-link,${QXUT_ARM64_LIBRARIES}")
set(CMAKE_CROSSCOMPILING_EMULATOR
    qemu-aarch64 -L /usr/${QXUT_TRIPLE} -E "LD_LIBRARY_PATH=${QXUT_ARM64_LIBRARIES}")
