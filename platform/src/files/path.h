// Paths as callers write them, and as Linux has them.
#pragma once

#include "base/text.h"

#include <string>

namespace qxplatform
{

// Callers may write either.
constexpr bool IsSeparator(char16_t character)
{
    return character == u'/' || character == u'\\';
}

// A caller may write /a/b or a/b, `\` for `/`, Z:\a\b for /a/b, and \\?\ before any of it. Another drive is the link
// `c:` in the folder `dosdevices` of the layer's home, \\server\share the link `unc/server/share` there. Folders of the
// form "." and ".." are resolved in the text, as the system does: so a path and its full path always name the same
// file.
struct NativePath
{
    std::string text; // absolute, or relative to the current folder; never ends in a separator, unless it is the root
    bool endsInSeparator = false;

    bool IsEmpty() const { return text.empty(); }
};

// Empty, with ERROR_PATH_NOT_FOUND, for a null or empty path and for one of a device.
NativePath ToNative(LPCWSTR path);

// The same, made absolute.
NativePath ToFullNative(LPCWSTR path);

// A name or path of Linux as the layer gives it out. The one character that Linux allows in a name and callers can't
// have there is the backslash: U+F05C stands for it, both ways.
std::u16string FromNative(std::string_view path);

// The same in the other direction, for a single name.
std::string NativeName(std::u16string_view component);

// The folder part of a path: "." for a name alone.
std::string FolderOf(const std::string& path);
std::string_view NameOf(std::string_view path);

// The error for a path whose file was not found, by errno: a folder on the way may be what is missing.
DWORD PathError(int code, const std::string& path);

} // namespace qxplatform
