#pragma once

#include "core/text/string.h"

#include <cstddef>
#include <memory>

namespace qx
{

// Collects the bytes that a decoder produces, for conversion to text at the end. Zero-terminated once it contains
// anything. It grows in steps of 256 bytes; if the size is known in advance, call Reserve.
class clsCHARString
{
public:
    clsCHARString() = default;
    clsCHARString(const clsCHARString& other);
    clsCHARString(clsCHARString&& other) noexcept { Swap(other); }
    clsCHARString& operator=(clsCHARString other) noexcept
    {
        Swap(other);
        return *this;
    }
    virtual ~clsCHARString() = default;

    void Append(char c)
    {
        if (_length + 2 > _capacity)
            Grow(CapacityFor(_length));
        _bytes[_length++] = c;
        _bytes[_length] = 0;
    }

    void Append(const char* bytes, std::size_t count);

    // Ensures room for a total of `length` bytes and the terminator.
    void Reserve(std::size_t length);

    std::size_t Length() const { return _length; }
    std::size_t Capacity() const { return _capacity; }
    const char* Text() const { return _bytes ? _bytes.get() : ""; }

    // Converts the text up to its first zero byte from a code page. With code page 0, each byte becomes the character
    // of the same value and zero bytes are included. The result has the default code page.
    String ToString(unsigned codePage) const;

private:
    // Returns the capacity needed to append a byte to `length` bytes.
    static std::size_t CapacityFor(std::size_t length) { return ((length + 1) & ~std::size_t{255}) + 256; }
    void Grow(std::size_t capacity);
    void Swap(clsCHARString& other) noexcept;

    std::unique_ptr<char[]> _bytes;
    std::size_t _length = 0;
    std::size_t _capacity = 0;
};

} // namespace qx
