// Converts between UTF-16, used by the API, and the byte strings of Linux: file names, environment variables, program
// arguments.
#pragma once

#include <minwindef.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace qxplatform
{

inline std::u16string_view View(LPCWSTR text)
{
    return reinterpret_cast<const char16_t*>(text);
}

inline std::u16string_view View(LPCWSTR text, std::size_t length)
{
    return {reinterpret_cast<const char16_t*>(text), length};
}

inline LPCWSTR Wide(const std::u16string& text)
{
    return reinterpret_cast<LPCWSTR>(text.c_str());
}

// Converting bytes to UTF-16 and back is lossless: a byte that is not valid UTF-8 becomes an unpaired surrogate U+DC80
// to U+DCFF, which is converted back to that byte. A file name in any encoding can therefore be listed and then opened.
std::u16string ToWide(std::string_view bytes);
std::string ToBytes(std::u16string_view text);

// Copies to a caller's buffer of `size` characters and terminates, by the convention of most of the system's text
// functions: returns the length without the terminator or, if the buffer is too small, the required size with it.
DWORD CopyOut(std::u16string_view text, LPWSTR buffer, DWORD size);

// Case-insensitive comparison by single characters, as the system compares the names of variables and modules.
char16_t UpperCase(char16_t character);
bool EqualWithoutCase(std::u16string_view first, std::u16string_view second);

} // namespace qxplatform
