// A text that grows character by character.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace qx
{

// An allocator that makes TextBuffer a different type from std::wstring. The standard library contains std::wstring
// compiled for 32-bit characters, and the linker must never choose that code.
template <class T>
struct TextBufferAllocator
{
    using value_type = T;

    TextBufferAllocator() = default;
    template <class Other>
    TextBufferAllocator(const TextBufferAllocator<Other>&)
    {
    }

    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* block, std::size_t count) { std::allocator<T>().deallocate(block, count); }

    friend bool operator==(const TextBufferAllocator&, const TextBufferAllocator&) { return true; }
};

// A text for decoders and parsers that build it piece by piece; String would reallocate in small steps. Converts to
// std::wstring_view like any text of the standard library.
using TextBuffer = std::basic_string<wchar_t, std::char_traits<wchar_t>, TextBufferAllocator<wchar_t>>;

} // namespace qx
