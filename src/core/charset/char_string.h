#pragma once

#include "core/text/string.h"

#include <cstddef>
#include <memory>

namespace qx
{

// Collects the bytes that a decoder puts out, to be converted to text at the end. Zero-terminated once it holds
// anything. It grows in steps of 256 bytes; who knows how much is coming reserves first.
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

    // Room for a total of so many bytes and the terminator.
    void Reserve(std::size_t length);

    std::size_t Length() const { return _length; }
    std::size_t Capacity() const { return _capacity; }
    const char* Text() const { return _bytes ? _bytes.get() : ""; }

    // The text up to its first zero byte, read in a code page; with code page 0 each byte becomes the character of the
    // same value. The result has the default code page.
    String ToString(unsigned codePage) const;

private:
    // The capacity to have before another byte joins so many.
    static std::size_t CapacityFor(std::size_t length) { return ((length + 1) & ~std::size_t{255}) + 256; }
    void Grow(std::size_t capacity);
    void Swap(clsCHARString& other) noexcept;

    std::unique_ptr<char[]> _bytes;
    std::size_t _length = 0;
    std::size_t _capacity = 0;
};

} // namespace qx
