// How the headers of the 16-bit C runtime bind its functions.
#pragma once

#ifdef __cplusplus
#define QXCRT_BEGIN                                                                                                    \
    extern "C"                                                                                                         \
    {
#define QXCRT_END }
#define QXCRT_NOEXCEPT noexcept
#define QXCRT_INLINE inline __attribute__((always_inline))
#else
#define QXCRT_BEGIN
#define QXCRT_END
#define QXCRT_NOEXCEPT
#define QXCRT_INLINE extern inline __attribute__((always_inline, gnu_inline))
#endif

// The process holds other functions under the standard's names: those of the C library, made for characters of 32 bits,
// and the sanitizers' interceptors of them, which the linker would even prefer. So each function has a symbol of its
// own, hidden in the binary that it was linked into: then the order of libraries doesn't matter, and no compiler takes
// it for the function that it knows by that name.
#define QXCRT(name) __asm__("qxcrt_" #name)

// What the C library offers for characters and the runtime here doesn't: standard headers may name it, nobody may call
// it.
#define QXCRT_NOT_HERE(why) __attribute__((error("not with characters of 16 bits: " why)))
