# The protections of what is installed: both libraries, the program, and the objects that are linked into them. Not with
# the sanitizers, which check more and replace the functions that _FORTIFY_SOURCE checks; and not for tests and examples,
# which are compiled without optimisation, where _FORTIFY_SOURCE does nothing.
#
# tests/install/check_hardening.py reads all of these from the built files.

add_library(qx_hardening INTERFACE)
if(QXUT_SANITIZE)
    return()
endif()

target_compile_options(qx_hardening INTERFACE
    -fstack-protector-strong
    -fstack-clash-protection
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
if(WIN32)
    # GNU ld can't mark an image as one with control-flow guard, so the compiler's options for it would change nothing.
    target_link_options(qx_hardening INTERFACE
        LINKER:--high-entropy-va LINKER:--dynamicbase LINKER:--nxcompat)
else()
    if(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
        target_compile_options(qx_hardening INTERFACE -mbranch-protection=standard)
    else()
        target_compile_options(qx_hardening INTERFACE -fcf-protection)
    endif()
    target_link_options(qx_hardening INTERFACE
        LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack LINKER:-z,separate-code
        $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
endif()
# By this the debugger finds the debug information, which is installed in files of its own.
target_link_options(qx_hardening INTERFACE LINKER:--build-id=sha1)
