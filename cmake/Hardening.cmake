# The hardening options of the installed files: both libraries, the program, and the objects linked into them. The
# options are off in sanitizer builds, because the sanitizers check more and replace the functions that _FORTIFY_SOURCE
# checks. Tests and examples don't use them, because _FORTIFY_SOURCE does nothing without optimisation.
#
# tests/install/check_hardening.py checks the built files for these properties.

add_library(qx_hardening INTERFACE)
if(QXUT_SANITIZE)
    return()
endif()

target_compile_options(qx_hardening INTERFACE
    -fstack-protector-strong
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
if(WIN32)
    # Not -fstack-clash-protection, which makes the cross compiler crash; Windows has stack probes of its own. The
    # compiler's options for control-flow guard would have no effect, because GNU ld can't mark an image for it.
    target_link_options(qx_hardening INTERFACE
        LINKER:--high-entropy-va LINKER:--dynamicbase LINKER:--nxcompat)
    # No build id, because the linker stores it with an empty name of a PDB file: Wine's debug help then searches all
    # folders of the symbol path, mistakes other files for it, and crashes.
    target_link_libraries(qx_hardening INTERFACE ssp) # contains the functions of the stack protector
else()
    target_compile_options(qx_hardening INTERFACE -fstack-clash-protection)
    if(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
        target_compile_options(qx_hardening INTERFACE -mbranch-protection=standard)
    else()
        target_compile_options(qx_hardening INTERFACE -fcf-protection)
    endif()
    target_link_options(qx_hardening INTERFACE
        LINKER:--build-id=sha1 # debuggers find the debug information through it, which is installed in separate files
        LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack LINKER:-z,separate-code
        $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
endif()
