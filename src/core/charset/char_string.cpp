#include "core/charset/char_string.h"

#include "core/charset/charset_conversion.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace qx
{

clsCHARString::clsCHARString(const clsCHARString& other)
{
    Append(other.Text(), other._length);
}

void clsCHARString::Append(const char* bytes, std::size_t count)
{
    if (count == 0)
        return;
    if (count >= SIZE_MAX / 2 - _length)
        throw std::bad_alloc();
    // The bytes may belong to this object, so they are copied before the old block is freed.
    std::unique_ptr<char[]> old;
    if (_length + count + 1 > _capacity)
    {
        const std::size_t capacity = CapacityFor(_length + count - 1);
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);
        if (_length)
            std::memcpy(larger.get(), _bytes.get(), _length);
        old = std::exchange(_bytes, std::move(larger));
        _capacity = capacity;
    }
    std::memmove(_bytes.get() + _length, bytes, count);
    _length += count;
    _bytes[_length] = 0;
}

void clsCHARString::Reserve(std::size_t length)
{
    if (length + 1 > _capacity)
        Grow(CapacityFor(length));
}

void clsCHARString::Grow(std::size_t capacity)
{
    auto larger = std::make_unique_for_overwrite<char[]>(capacity);
    if (_length)
        std::memcpy(larger.get(), _bytes.get(), _length);
    larger[_length] = 0;
    _bytes = std::move(larger);
    _capacity = capacity;
}

void clsCHARString::Swap(clsCHARString& other) noexcept
{
    std::swap(_bytes, other._bytes);
    std::swap(_length, other._length);
    std::swap(_capacity, other._capacity);
}

String clsCHARString::ToString(unsigned codePage) const
{
    if (_length == 0)
        return String::EmptyString();
    if (codePage != 0)
        return String(clsCharsetConversionStringCP(codePage, Text()).GetWide());
    // Includes zero bytes, which a decoder may have produced.
    String text;
    wchar_t* characters = text.GetBuffer(_length + 1);
    for (std::size_t i = 0; i < _length; ++i)
        characters[i] = static_cast<unsigned char>(Text()[i]);
    text.ReleaseBuffer(_length);
    return text;
}

} // namespace qx
