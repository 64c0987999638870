// The C library's header with the names that the Microsoft runtime adds.
#pragma once

#include_next <string.h>

#include <wchar.h>

QXCRT_BEGIN

// These fold A to Z and nothing else.
int _stricmp(const char* a, const char* b) QXCRT_NOEXCEPT QXCRT(_stricmp);
int _strnicmp(const char* a, const char* b, size_t count) QXCRT_NOEXCEPT QXCRT(_strnicmp);

QXCRT_END
