// Character types and case conversion of 16-bit characters in the "C" locale. Replaces the C library's header of this
// name.
#ifndef QXPLATFORM_WCTYPE_H
#define QXPLATFORM_WCTYPE_H

// A program with a wchar_t of 32 bits uses the C library's functions.
#if __SIZEOF_WCHAR_T__ != 2
#include_next <wctype.h>
#else

#include <qxcrt_names.h>

#include <bits/types/locale_t.h>
#include <bits/types/wint_t.h>

#ifndef WEOF
#define WEOF (0xffffffffu)
#endif

typedef unsigned long wctype_t;
typedef const int* wctrans_t;

QXCRT_BEGIN

// Convert A to Z only; use LCMapStringW for other letters.
wint_t towlower(wint_t c) QXCRT_NOEXCEPT QXCRT(towlower);
wint_t towupper(wint_t c) QXCRT_NOEXCEPT QXCRT(towupper);
// White space of all scripts: the runtime's character types don't depend on the locale.
int iswspace(wint_t c) QXCRT_NOEXCEPT QXCRT(iswspace);

// Declared because <cwctype> names them. A call doesn't compile.
#define QXCRT_NO_TYPE QXCRT_NOT_HERE("use GetStringTypeW")
int iswalnum(wint_t c) QXCRT_NO_TYPE;
int iswalpha(wint_t c) QXCRT_NO_TYPE;
int iswblank(wint_t c) QXCRT_NO_TYPE;
int iswcntrl(wint_t c) QXCRT_NO_TYPE;
int iswctype(wint_t c, wctype_t type) QXCRT_NO_TYPE;
int iswdigit(wint_t c) QXCRT_NO_TYPE;
int iswgraph(wint_t c) QXCRT_NO_TYPE;
int iswlower(wint_t c) QXCRT_NO_TYPE;
int iswprint(wint_t c) QXCRT_NO_TYPE;
int iswpunct(wint_t c) QXCRT_NO_TYPE;
int iswupper(wint_t c) QXCRT_NO_TYPE;
int iswxdigit(wint_t c) QXCRT_NO_TYPE;
wint_t towctrans(wint_t c, wctrans_t mapping) QXCRT_NO_TYPE;
wctrans_t wctrans(const char* name) QXCRT_NO_TYPE;
wctype_t wctype(const char* name) QXCRT_NO_TYPE;

QXCRT_END

#endif

#endif
