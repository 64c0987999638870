// Conversion between callers' paths and Linux paths.
#pragma once

#include "base/text.h"

#include <string>

namespace qxplatform
{

// Callers may use either separator.
constexpr bool IsSeparator(char16_t character)
{
    return character == u'/' || character == u'\\';
}

// Callers may write /a/b or a/b, `\` instead of `/`, Z:\a\b for /a/b, and \\?\ before any of them. Other drives are
// links such as `c:` in the folder `dosdevices` of the layer's home; \\server\share is the link `unc/server/share`
// there. "." and ".." are resolved textually, as on the system, so a path and its full path always refer to the same
// file as long as these links stay.
struct NativePath
{
    std::string text; // absolute, or relative to the current folder; no trailing separator unless it is the root
    bool endsInSeparator = false;

    bool IsEmpty() const { return text.empty(); }
};

// Returns an empty path with ERROR_PATH_NOT_FOUND for null, empty and device paths.
NativePath ToNative(LPCWSTR path);

// Converts to an absolute path. Fails like ToNative.
NativePath ToFullNative(LPCWSTR path);

// Returns the path in the form that callers receive, with "." and ".." resolved textually: `Q:\a` and
// `\\server\share\a` keep their form, also if there is no such drive or share; all other paths get the form `/a/b`, or
// `a/b` if they are relative and `isFull` is false. Returns an empty text if ToNative would return an empty path.
std::u16string CallersForm(LPCWSTR path, bool isFull);

// Converts a Linux name or path to the form returned to callers. The backslash is the only character that Linux permits
// in names and callers can't use there: it is represented by U+F05C, in both directions.
std::u16string FromNative(std::string_view path);
std::u16string FromNative(const NativePath& path); // with the separator at its end

// Converts a single name from the callers' form to the Linux form.
std::string NativeName(std::u16string_view component);

// Returns the folder part of a path, or "." for a name without one.
std::string FolderOf(const std::string& path);
std::string_view NameOf(std::string_view path);

// Returns the error for a path that was not found, according to errno: a parent folder may be missing.
DWORD PathError(int code, const std::string& path);

} // namespace qxplatform
