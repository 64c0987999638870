// The C runtime's functions for 16-bit text. Replaces the C library's header of this name, whose functions expect
// 32-bit characters. All functions behave as in the "C" locale, whatever locale the process has set.
#ifndef QXPLATFORM_WCHAR_H
#define QXPLATFORM_WCHAR_H

// A program with a wchar_t of 32 bits uses the C library's functions.
#if __SIZEOF_WCHAR_T__ != 2
#include_next <wchar.h>
#else

#include <qxcrt_names.h>

#include <stdarg.h>
#include <stddef.h>

#include <bits/types/FILE.h>
#include <bits/types/__FILE.h>
#include <bits/types/locale_t.h>
#include <bits/types/mbstate_t.h>
#include <bits/types/wint_t.h>
#include <bits/wchar.h>

#ifndef WEOF
#define WEOF (0xffffffffu)
#endif

struct tm;

typedef int errno_t;

QXCRT_BEGIN

// Lengths, copies, comparisons. Comparisons are by unsigned code unit.
size_t wcslen(const wchar_t* text) QXCRT_NOEXCEPT QXCRT(wcslen);
size_t wcsnlen(const wchar_t* text, size_t limit) QXCRT_NOEXCEPT QXCRT(wcsnlen);
wchar_t* wcscpy(wchar_t* target, const wchar_t* source) QXCRT_NOEXCEPT QXCRT(wcscpy);
wchar_t* wcsncpy(wchar_t* target, const wchar_t* source, size_t count) QXCRT_NOEXCEPT QXCRT(wcsncpy);
int wcscmp(const wchar_t* a, const wchar_t* b) QXCRT_NOEXCEPT QXCRT(wcscmp);
int wcsncmp(const wchar_t* a, const wchar_t* b, size_t count) QXCRT_NOEXCEPT QXCRT(wcsncmp);
int wmemcmp(const wchar_t* a, const wchar_t* b, size_t count) QXCRT_NOEXCEPT QXCRT(wmemcmp);
wchar_t* wmemcpy(wchar_t* target, const wchar_t* source, size_t count) QXCRT_NOEXCEPT QXCRT(wmemcpy);
wchar_t* wmemmove(wchar_t* target, const wchar_t* source, size_t count) QXCRT_NOEXCEPT QXCRT(wmemmove);
wchar_t* wmemset(wchar_t* target, wchar_t c, size_t count) QXCRT_NOEXCEPT QXCRT(wmemset);

// Ignore the case of A to Z only.
int _wcsicmp(const wchar_t* a, const wchar_t* b) QXCRT_NOEXCEPT QXCRT(_wcsicmp);
int _wcsnicmp(const wchar_t* a, const wchar_t* b, size_t count) QXCRT_NOEXCEPT QXCRT(_wcsnicmp);
int wcscasecmp(const wchar_t* a, const wchar_t* b) QXCRT_NOEXCEPT QXCRT(_wcsicmp); // the name used by GoogleTest

// Searches.
size_t wcsspn(const wchar_t* text, const wchar_t* accepted) QXCRT_NOEXCEPT QXCRT(wcsspn);

// The wide formatter in the Microsoft dialect: `%s` and `%c` are wide, `%hs`, `%S`, `%C` narrow; `l` means 32 bits,
// `ll` and `I64` 64 bits. A text longer than `size` is truncated, and the result is -1. A terminator is written only if
// there is room. With a null target and size 0, returns the length of the whole text.
int _vsnwprintf(wchar_t* target, size_t size, const wchar_t* format, va_list arguments) QXCRT(_vsnwprintf);
int _snwprintf(wchar_t* target, size_t size, const wchar_t* format, ...) QXCRT(_snwprintf);

// Parsing of numbers. `*end` is set to the end of the number, or to `text` if there is none.
// wcstol and wcstoul have a range of 32 bits, as always in the Microsoft runtime, although `long` has 64 bits here.
// Larger values return 0x7fffffff or 0xffffffff with the error ERANGE; -1 as an unsigned number is 0xffffffff.
long wcstol(const wchar_t* text, wchar_t** end, int base) QXCRT_NOEXCEPT QXCRT(wcstol);
unsigned long wcstoul(const wchar_t* text, wchar_t** end, int base) QXCRT_NOEXCEPT QXCRT(wcstoul);
double wcstod(const wchar_t* text, wchar_t** end) QXCRT_NOEXCEPT QXCRT(wcstod);
int _wtoi(const wchar_t* text) QXCRT_NOEXCEPT QXCRT(_wtoi);

// The scanner in the Microsoft dialect, for numbers only: %d %i %u %o %x %X %p with width and size, `*`, %n, %%.
// Returns the number of values stored, or -1 if the text is empty. Numbers that are too large lose their upper bits.
int _snwscanf(const wchar_t* text, size_t length, const wchar_t* format, ...) QXCRT(_snwscanf);

// Formats a time with %Y %y %m %d %H %M %S. Returns the length, or 0 if the text doesn't fit or the format contains
// another conversion.
size_t wcsftime(wchar_t* target, size_t size, const wchar_t* format, const struct tm* time) QXCRT_NOEXCEPT
    QXCRT(wcsftime);

// Inline wrappers of the byte functions, which compilers optimise.
QXCRT_INLINE wchar_t* wmemcpy(wchar_t* target, const wchar_t* source, size_t count) QXCRT_NOEXCEPT
{
    return (wchar_t*)__builtin_memcpy(target, source, count * sizeof(wchar_t));
}

QXCRT_INLINE wchar_t* wmemmove(wchar_t* target, const wchar_t* source, size_t count) QXCRT_NOEXCEPT
{
    return (wchar_t*)__builtin_memmove(target, source, count * sizeof(wchar_t));
}

QXCRT_END

// In C++ the result is const if the searched text is. This is the name by which the standard library's headers test for
// these overloads.
#ifdef __cplusplus
#define __CORRECT_ISO_CPP_WCHAR_H_PROTO
extern "C++" const wchar_t* wcschr(const wchar_t* text, wchar_t c) QXCRT_NOEXCEPT QXCRT(wcschr);
extern "C++" const wchar_t* wcsrchr(const wchar_t* text, wchar_t c) QXCRT_NOEXCEPT QXCRT(wcsrchr);
extern "C++" const wchar_t* wcsstr(const wchar_t* text, const wchar_t* part) QXCRT_NOEXCEPT QXCRT(wcsstr);
extern "C++" const wchar_t* wmemchr(const wchar_t* text, wchar_t c, size_t count) QXCRT_NOEXCEPT QXCRT(wmemchr);
extern "C++" wchar_t* wcschr(wchar_t* text, wchar_t c) QXCRT_NOEXCEPT QXCRT(wcschr);
extern "C++" wchar_t* wcsrchr(wchar_t* text, wchar_t c) QXCRT_NOEXCEPT QXCRT(wcsrchr);
extern "C++" wchar_t* wcsstr(wchar_t* text, const wchar_t* part) QXCRT_NOEXCEPT QXCRT(wcsstr);
extern "C++" wchar_t* wmemchr(wchar_t* text, wchar_t c, size_t count) QXCRT_NOEXCEPT QXCRT(wmemchr);
#else
wchar_t* wcschr(const wchar_t* text, wchar_t c) QXCRT(wcschr);
wchar_t* wcsrchr(const wchar_t* text, wchar_t c) QXCRT(wcsrchr);
wchar_t* wcsstr(const wchar_t* text, const wchar_t* part) QXCRT(wcsstr);
wchar_t* wmemchr(const wchar_t* text, wchar_t c, size_t count) QXCRT(wmemchr);
#endif

// Declared because <cwchar> names them. A call doesn't compile.
#define QXCRT_WIDE_IO QXCRT_NOT_HERE("C library streams of wide characters")
#define QXCRT_MULTIBYTE QXCRT_NOT_HERE("use MultiByteToWideChar and WideCharToMultiByte")
#define QXCRT_DIALECT QXCRT_NOT_HERE("the formatter's dialect would differ, use _snwprintf, _vsnwprintf or _snwscanf")
#define QXCRT_NO_CALLER QXCRT_NOT_HERE("nothing needed it yet")
QXCRT_BEGIN
wint_t fgetwc(__FILE* file) QXCRT_WIDE_IO;
wchar_t* fgetws(wchar_t* text, int count, __FILE* file) QXCRT_WIDE_IO;
wint_t fputwc(wchar_t c, __FILE* file) QXCRT_WIDE_IO;
int fputws(const wchar_t* text, __FILE* file) QXCRT_WIDE_IO;
int fwide(__FILE* file, int mode) QXCRT_WIDE_IO;
int fwprintf(__FILE* file, const wchar_t* format, ...) QXCRT_WIDE_IO;
int fwscanf(__FILE* file, const wchar_t* format, ...) QXCRT_WIDE_IO;
wint_t getwc(__FILE* file) QXCRT_WIDE_IO;
wint_t getwchar(void) QXCRT_WIDE_IO;
wint_t putwc(wchar_t c, __FILE* file) QXCRT_WIDE_IO;
wint_t putwchar(wchar_t c) QXCRT_WIDE_IO;
wint_t ungetwc(wint_t c, __FILE* file) QXCRT_WIDE_IO;
int vfwprintf(__FILE* file, const wchar_t* format, va_list arguments) QXCRT_WIDE_IO;
int vfwscanf(__FILE* file, const wchar_t* format, va_list arguments) QXCRT_WIDE_IO;
int vwprintf(const wchar_t* format, va_list arguments) QXCRT_WIDE_IO;
int vwscanf(const wchar_t* format, va_list arguments) QXCRT_WIDE_IO;
int wprintf(const wchar_t* format, ...) QXCRT_WIDE_IO;
int wscanf(const wchar_t* format, ...) QXCRT_WIDE_IO;
wint_t btowc(int c) QXCRT_MULTIBYTE;
int wctob(wint_t c) QXCRT_MULTIBYTE;
size_t mbrlen(const char* text, size_t count, mbstate_t* state) QXCRT_MULTIBYTE;
size_t mbrtowc(wchar_t* target, const char* text, size_t count, mbstate_t* state) QXCRT_MULTIBYTE;
int mbsinit(const mbstate_t* state) QXCRT_MULTIBYTE;
size_t mbsrtowcs(wchar_t* target, const char** source, size_t count, mbstate_t* state) QXCRT_MULTIBYTE;
size_t wcrtomb(char* target, wchar_t c, mbstate_t* state) QXCRT_MULTIBYTE;
size_t wcsrtombs(char* target, const wchar_t** source, size_t count, mbstate_t* state) QXCRT_MULTIBYTE;
int swprintf(wchar_t* target, size_t size, const wchar_t* format, ...) QXCRT_DIALECT;
int vswprintf(wchar_t* target, size_t size, const wchar_t* format, va_list arguments) QXCRT_DIALECT;
int swscanf(const wchar_t* text, const wchar_t* format, ...) QXCRT_DIALECT;
int vswscanf(const wchar_t* text, const wchar_t* format, va_list arguments) QXCRT_DIALECT;
wchar_t* wcscat(wchar_t* target, const wchar_t* source) QXCRT_NO_CALLER;
wchar_t* wcsncat(wchar_t* target, const wchar_t* source, size_t count) QXCRT_NO_CALLER;
size_t wcscspn(const wchar_t* text, const wchar_t* rejected) QXCRT_NO_CALLER;
wchar_t* wcspbrk(const wchar_t* text, const wchar_t* wanted) QXCRT_NO_CALLER;
long long wcstoll(const wchar_t* text, wchar_t** end, int base) QXCRT_NO_CALLER;
unsigned long long wcstoull(const wchar_t* text, wchar_t** end, int base) QXCRT_NO_CALLER;
wchar_t* wcstok(wchar_t* text, const wchar_t* separators, wchar_t** next) QXCRT_NO_CALLER;
int wcscoll(const wchar_t* a, const wchar_t* b) QXCRT_NO_CALLER;
size_t wcsxfrm(wchar_t* target, const wchar_t* source, size_t size) QXCRT_NO_CALLER;
float wcstof(const wchar_t* text, wchar_t** end) QXCRT_NO_CALLER;
long double wcstold(const wchar_t* text, wchar_t** end) QXCRT_NO_CALLER;
QXCRT_END

#endif

#endif
