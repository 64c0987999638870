#include "core/text/text_format.h"

#include <wchar.h>

#include <memory>

namespace qx
{

namespace
{

// Returns the position of the next `T` before a text or character conversion, or null.
const wchar_t* FindOwnWidth(const wchar_t* format)
{
    while ((format = wcschr(format, L'%')) != nullptr)
    {
        ++format;
        if (*format == L'%')
        {
            ++format;
            continue;
        }
        format += wcsspn(format, L"-+ #0123456789.*");
        if (*format == L'T' && format[1] != 0 && wcschr(L"sScC", format[1]))
            return format;
    }
    return nullptr;
}

// A format in which `%Ts`, text of the format's own width, is replaced by `%ls`, because not every runtime library
// supports it.
class PortableFormat
{
public:
    explicit PortableFormat(const wchar_t* format) : _format(format)
    {
        const wchar_t* found = FindOwnWidth(format);
        if (!found)
            return;
        const std::size_t size = wcslen(format) + 1;
        _copy = std::make_unique_for_overwrite<wchar_t[]>(size);
        wmemcpy(_copy.get(), format, size);
        for (; found; found = FindOwnWidth(found))
            _copy[static_cast<std::size_t>(found - format)] = L'l';
        _format = _copy.get();
    }

    const wchar_t* Text() const { return _format; }

private:
    const wchar_t* _format;
    std::unique_ptr<wchar_t[]> _copy;
};

} // namespace

int FormatBounded(wchar_t* buffer, std::size_t size, const wchar_t* format, va_list arguments)
{
    if (size == 0)
        return -1;
    buffer[0] = 0;
    const int count = _vsnwprintf(buffer, size - 1, PortableFormat(format).Text(), arguments);
    buffer[size - 1] = 0;
    return count;
}

} // namespace qx
