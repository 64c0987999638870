#include <shlwapi.h>
#include <wchar.h>

#include "base/fail.h"
#include "files/path.h"

#include <algorithm>
#include <string_view>

using namespace qxplatform;

namespace
{

// Returns the length of the part that ".." can't leave: a drive with its separator, a share's two separators, or the
// first separator.
std::size_t RootLength(std::wstring_view path)
{
    if (path.size() >= 2 && path[1] == L':')
        return path.size() >= 3 && IsSeparator(path[2]) ? 3 : 2;
    std::size_t length = 0;
    while (length < path.size() && length < 2 && IsSeparator(path[length]))
        ++length;
    return length;
}

// Builds the path in the caller's buffer, whose size the caller has checked. The result is never longer than the path,
// except that an empty path becomes the root.
class Canonical
{
public:
    Canonical(wchar_t* path, std::wstring_view root) : _path(path), _root(root.size()), _length(root.size())
    {
        std::copy(root.begin(), root.end(), path);
    }

    // Adds a component and the separator after it, if there is one.
    void Add(std::wstring_view component, std::wstring_view separator)
    {
        if (component == L".")
            DropSeparatorAtEnd(separator);
        else if (component == L"..")
        {
            DropLast();
            DropSeparatorAtEnd(separator);
        }
        else
        {
            Append(component);
            Append(separator);
        }
    }

    void Finish()
    {
        if (_length == 0)
            Append(L"\\");
        _path[_length] = 0;
    }

private:
    void Append(std::wstring_view text)
    {
        std::copy(text.begin(), text.end(), _path + _length);
        _length += text.size();
    }

    void DropLast()
    {
        if (_length > _root)
            --_length; // the separator after it
        while (_length > _root && !IsSeparator(_path[_length - 1]))
            --_length;
    }

    // Removes the separator before a dot at the end of the path.
    void DropSeparatorAtEnd(std::wstring_view separator)
    {
        if (separator.empty() && _length > _root && IsSeparator(_path[_length - 1]))
            --_length;
    }

    wchar_t* _path;
    std::size_t _root;
    std::size_t _length;
};

} // namespace

BOOL WINAPI PathCanonicalizeW(LPWSTR target, LPCWSTR source)
{
    if (target)
        *target = 0;
    if (!target || !source)
        return Fail(ERROR_INVALID_PARAMETER);
    const std::wstring_view path(source);
    if (path.size() >= MAX_PATH)
        return Fail(ERROR_FILENAME_EXCED_RANGE);
    const std::size_t root = RootLength(path);
    Canonical canonical(target, path.substr(0, root));
    for (std::size_t at = root; at < path.size();)
    {
        const std::size_t end = static_cast<std::size_t>(
            std::find_if(path.begin() + static_cast<std::ptrdiff_t>(at), path.end(), IsSeparator) - path.begin());
        canonical.Add(path.substr(at, end - at), path.substr(end, 1));
        at = end + 1;
    }
    canonical.Finish();
    return TRUE;
}
