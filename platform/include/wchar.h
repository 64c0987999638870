// The C runtime's functions for text of 16-bit characters, in place of the C library's header of this name, whose
// functions are made for 32 bits. All of them work as in the "C" locale, whatever locale the process has set.
#pragma once

// A program with a wchar_t of 32 bits has the C library's functions.
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

// Lengths, copies, comparisons. A comparison is by unsigned code unit.
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

// These fold A to Z and nothing else.
int _wcsicmp(const wchar_t* a, const wchar_t* b) QXCRT_NOEXCEPT QXCRT(_wcsicmp);
int _wcsnicmp(const wchar_t* a, const wchar_t* b, size_t count) QXCRT_NOEXCEPT QXCRT(_wcsnicmp);
int wcscasecmp(const wchar_t* a, const wchar_t* b) QXCRT_NOEXCEPT QXCRT(_wcsicmp); // the name that GoogleTest uses

// Searches.
size_t wcsspn(const wchar_t* text, const wchar_t* accepted) QXCRT_NOEXCEPT QXCRT(wcsspn);

// The formatter of wide text in the Microsoft dialect: `%s` and `%c` are wide, `%hs`, `%S`, `%C` narrow; `l` means 32
// bits, `ll` and `I64` 64. A text that is longer than `size` is cut and gives -1; a terminator is only written where
// there is room. Without a target and with size 0 the result is the length that the text would have.
int _vsnwprintf(wchar_t* target, size_t size, const wchar_t* format, va_list arguments) QXCRT(_vsnwprintf);
int _snwprintf(wchar_t* target, size_t size, const wchar_t* format, ...) QXCRT(_snwprintf);

// Numbers from text. `*end` is set behind the number, or to `text` if there is none.
// The range of wcstol and wcstoul is that of 32 bits, as everywhere with the Microsoft runtime, though `long` has 64
// here: what is greater gives 0x7fffffff or 0xffffffff and the error ERANGE, and -1 as unsigned is 0xffffffff.
long wcstol(const wchar_t* text, wchar_t** end, int base) QXCRT_NOEXCEPT QXCRT(wcstol);
unsigned long wcstoul(const wchar_t* text, wchar_t** end, int base) QXCRT_NOEXCEPT QXCRT(wcstoul);
double wcstod(const wchar_t* text, wchar_t** end) QXCRT_NOEXCEPT QXCRT(wcstod);
int _wtoi(const wchar_t* text) QXCRT_NOEXCEPT QXCRT(_wtoi);

// The scanner of the Microsoft dialect, for numbers: %d %i %u %o %x %X %p with a width and a size, `*`, %n, %%. The
// result is the count of stored numbers, or -1 if the text is empty. A number that is too great loses its upper bits.
int _snwscanf(const wchar_t* text, size_t length, const wchar_t* format, ...) QXCRT(_snwscanf);

// A time by %Y %y %m %d %H %M %S; the length, or 0 if the text doesn't fit or another conversion is asked for.
size_t wcsftime(wchar_t* target, size_t size, const wchar_t* format, const struct tm* time) QXCRT_NOEXCEPT
    QXCRT(wcsftime);

// As good as the copies of bytes, about which the compiler knows everything.
QXCRT_INLINE wchar_t* wmemcpy(wchar_t* target, const wchar_t* source, size_t count) QXCRT_NOEXCEPT
{
    return (wchar_t*)__builtin_memcpy(target, source, count * sizeof(wchar_t));
}

QXCRT_INLINE wchar_t* wmemmove(wchar_t* target, const wchar_t* source, size_t count) QXCRT_NOEXCEPT
{
    return (wchar_t*)__builtin_memmove(target, source, count * sizeof(wchar_t));
}

QXCRT_END

// In C++ the result is as constant as the text that was searched; the standard library's headers ask for it by this
// name.
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

// Declared because <cwchar> names them; a call doesn't compile.
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
