// Binds the functions of the 16-bit C runtime to their symbols.
#ifndef QXPLATFORM_QXCRT_NAMES_H
#define QXPLATFORM_QXCRT_NAMES_H

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

// The process contains other functions with the standard's names: the functions of the C library, which expect 32-bit
// characters, and the sanitizers' interceptors, which the linker would even prefer. Therefore each function has a
// symbol of its own, hidden in the binary it is linked into. The order of libraries then doesn't matter, and no
// compiler mistakes the function for its built-in of that name.
#define QXCRT(name) __asm__("qxcrt_" #name)

// Character functions of the C library without a counterpart in this runtime. Standard headers may name them; a call
// doesn't compile.
#define QXCRT_NOT_HERE(why) __attribute__((error("not with characters of 16 bits: " why)))

#endif
