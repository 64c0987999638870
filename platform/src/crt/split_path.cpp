#include "invalid_parameter.h"

#include <stdlib.h>
#include <wchar.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace
{

// The separator that the layer writes; it accepts both.
constexpr wchar_t kSeparator = L'/';

bool IsSeparator(wchar_t c)
{
    return c == L'/' || c == L'\\';
}

struct PathParts
{
    std::wstring_view drive, directory, name, extension;
};

PathParts Split(std::wstring_view path)
{
    PathParts parts;
    if (path.size() >= 2 && path[1] == L':' && !IsSeparator(path[0]))
    {
        parts.drive = path.substr(0, 2);
        path.remove_prefix(2);
    }
    const std::size_t separator = path.find_last_of(L"/\\");
    const std::size_t nameStart = separator == path.npos ? 0 : separator + 1;
    parts.directory = path.substr(0, nameStart);
    path.remove_prefix(nameStart);
    const std::size_t nameLength = std::min(path.rfind(L'.'), path.size());
    parts.name = path.substr(0, nameLength);
    parts.extension = path.substr(nameLength);
    return parts;
}

// The caller's buffer for one part of the path; null if the caller doesn't want the part.
struct PartTarget
{
    wchar_t* buffer;
    std::size_t size;

    bool IsValid() const { return (buffer == nullptr) == (size == 0); }
    bool HasRoom(std::wstring_view part) const { return !buffer || part.size() < size; }
    void Take(std::wstring_view part) const
    {
        if (buffer)
            buffer[part.copy(buffer, part.size())] = 0;
    }
};

// A path under construction. Records whether it fits.
class PathTarget
{
public:
    PathTarget(wchar_t* buffer, std::size_t size) : _buffer(buffer), _size(size) {}

    void Append(std::wstring_view text)
    {
        _fits = _fits && text.size() < _size - _length;
        if (_fits)
            _length += text.copy(_buffer + _length, text.size());
    }
    void Append(wchar_t c) { Append(std::wstring_view(&c, 1)); }

    errno_t Finish()
    {
        _buffer[_fits ? _length : 0] = 0;
        return _fits ? 0 : ERANGE;
    }

private:
    wchar_t* _buffer;
    std::size_t _size;
    std::size_t _length = 0;
    bool _fits = true;
};

std::wstring_view ViewOf(const wchar_t* text)
{
    return text ? std::wstring_view(text) : std::wstring_view();
}

} // namespace

using qxplatform::RefuseParameter;

errno_t _wsplitpath_s(const wchar_t* path, wchar_t* drive, std::size_t driveSize, wchar_t* directory,
    std::size_t directorySize, wchar_t* name, std::size_t nameSize, wchar_t* extension,
    std::size_t extensionSize) noexcept
{
    const PartTarget targets[] = {
        {drive, driveSize}, {directory, directorySize}, {name, nameSize}, {extension, extensionSize}};
    bool valid = path != nullptr;
    for (const PartTarget& target : targets)
        valid = valid && target.IsValid();
    if (!valid)
        return RefuseParameter(EINVAL);

    const PathParts parts = Split(path);
    const std::wstring_view texts[] = {parts.drive, parts.directory, parts.name, parts.extension};
    bool fits = true;
    for (std::size_t i = 0; i < std::size(targets); ++i)
        fits = fits && targets[i].HasRoom(texts[i]);
    for (std::size_t i = 0; i < std::size(targets); ++i)
        targets[i].Take(fits ? texts[i] : std::wstring_view());
    return fits ? 0 : RefuseParameter(ERANGE);
}

errno_t _wmakepath_s(wchar_t* path, std::size_t size, const wchar_t* drive, const wchar_t* directory,
    const wchar_t* name, const wchar_t* extension) noexcept
{
    if (!path || size == 0)
        return RefuseParameter(EINVAL);
    PathTarget target(path, size);
    if (drive && *drive)
    {
        target.Append(*drive);
        target.Append(L':');
    }
    if (directory && *directory)
    {
        target.Append(ViewOf(directory));
        if (!IsSeparator(ViewOf(directory).back()))
            target.Append(kSeparator);
    }
    target.Append(ViewOf(name));
    if (extension && *extension)
    {
        if (*extension != L'.')
            target.Append(L'.');
        target.Append(ViewOf(extension));
    }
    const errno_t result = target.Finish();
    return result == 0 ? 0 : RefuseParameter(result);
}
