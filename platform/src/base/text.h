// UTF-16 of the interfaces and the bytes of Linux: names of files, environment variables, program arguments.
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

// The two conversions lose nothing on the way from bytes to UTF-16 and back: a byte that is no UTF-8 becomes a lone
// surrogate U+DC80 to U+DCFF, and such a surrogate becomes that byte again. So a name of any encoding can be listed
// and then opened.
std::u16string ToWide(std::string_view bytes);
std::string ToBytes(std::u16string_view text);

// Copies into a caller's buffer of `size` characters and terminates, by the rule of most text functions of the system:
// the result is the length without the terminator, or, where the buffer is too small, the size that is needed with it.
DWORD CopyOut(std::u16string_view text, LPWSTR buffer, DWORD size);

// Comparison without case in one character, as the system compares names of variables and modules.
char16_t UpperCase(char16_t character);
bool EqualWithoutCase(std::u16string_view first, std::u16string_view second);

} // namespace qxplatform
