# The hardening options of the installed files: both libraries, the program, and the objects that are linked into them.
# They are off with the sanitizers, which check more and replace the functions that _FORTIFY_SOURCE checks. Tests and
# examples don't use them: they are compiled without optimisation, where _FORTIFY_SOURCE does nothing.
#
# tests/install/check_hardening.py reads these properties from the built files.

add_library(qx_hardening INTERFACE)
if(QXUT_SANITIZE)
    return()
endif()

target_compile_options(qx_hardening INTERFACE
    -fstack-protector-strong
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
if(WIN32)
    # Windows' own stack probes take the place of -fstack-clash-protection, at which the cross compiler crashes. GNU ld
    # can't mark an image for control-flow guard, so the compiler's options for it would change nothing.
    target_link_options(qx_hardening INTERFACE
        LINKER:--high-entropy-va LINKER:--dynamicbase LINKER:--nxcompat)
else()
    target_compile_options(qx_hardening INTERFACE -fstack-clash-protection)
    if(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
        target_compile_options(qx_hardening INTERFACE -mbranch-protection=standard)
    else()
        target_compile_options(qx_hardening INTERFACE -fcf-protection)
    endif()
    target_link_options(qx_hardening INTERFACE
        LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack LINKER:-z,separate-code
        $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
endif()
# The debugger uses the build id to find the debug information, which is installed in separate files.
target_link_options(qx_hardening INTERFACE LINKER:--build-id=sha1)
