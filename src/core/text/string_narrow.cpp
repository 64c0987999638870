#include "core/text/string.h"

#include <windows.h>

#include <climits>
#include <cstring>

namespace qx
{

namespace
{

constexpr unsigned kUtf8 = 65001;

// Returns the number of bytes to convert, or 0 if there is no text or too much for one call.
std::size_t LengthOf(const char* text, std::size_t offset, std::size_t count)
{
    if (!text || *text == 0)
        return 0;
    if (count == String::kAll)
        count = std::strlen(text + offset);
    return count <= INT_MAX ? count : 0;
}

} // namespace

void String::Assign(const char* text, std::size_t offset, std::size_t count)
{
    const std::size_t bytes = LengthOf(text, offset, count);
    if (bytes == 0)
    {
        Empty();
        return;
    }
    // The cached narrow text may be the source, so it is kept until the end.
    const std::unique_ptr<char[]> narrow = std::move(_narrow);
    const char* source = text + offset;
    if (_codePage == 0)
    {
        Reserve(StringRecord::CapacityFor(bytes), false);
        for (std::size_t i = 0; i < bytes; ++i)
            _record->text[i] = static_cast<unsigned char>(source[i]);
        SetLength(bytes);
        return;
    }
    const DWORD flags = _codePage == kUtf8 ? 0 : MB_PRECOMPOSED;
    const int size = static_cast<int>(bytes);
    const int length = MultiByteToWideChar(_codePage, flags, source, size, nullptr, 0);
    if (length <= 0)
    {
        Empty();
        return;
    }
    const auto characters = static_cast<std::size_t>(length);
    Reserve(StringRecord::CapacityFor(characters), false);
    MultiByteToWideChar(_codePage, flags, source, size, _record->text, length);
    SetLength(characters);
}

const char* String::NarrowText() const
{
    if (_length == 0 || _length > INT_MAX)
        return "";
    if (!_narrow)
    {
        const int length = static_cast<int>(_length);
        const int bytes = WideCharToMultiByte(_codePage, 0, Text(), length, nullptr, 0, nullptr, nullptr);
        auto narrow = std::make_unique<char[]>(static_cast<std::size_t>(bytes) + 1);
        if (bytes > 0)
            WideCharToMultiByte(_codePage, 0, Text(), length, narrow.get(), bytes, nullptr, nullptr);
        _narrow = std::move(narrow);
    }
    return _narrow.get();
}

} // namespace qx
