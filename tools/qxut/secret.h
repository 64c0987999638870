// Secrets in memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace qxut
{

// Sets the bytes to zero. The compiler must assume that they are read afterwards, so it can't remove the stores.
inline void Erase(void* memory, std::size_t size)
{
    std::memset(memory, 0, size);
    __asm__ __volatile__("" : : "r"(memory) : "memory");
}

// A line of up to kMost bytes that is erased with the object. It is never moved, which would leave a copy behind.
class SecretLine
{
public:
    static constexpr std::size_t kMost = 1024;

    SecretLine() = default;
    SecretLine(const SecretLine&) = delete;
    SecretLine& operator=(const SecretLine&) = delete;
    ~SecretLine() { Erase(_bytes.data(), _bytes.size()); }

    // Returns false if the line is full.
    bool Append(char c)
    {
        if (_length == kMost)
            return false;
        _bytes[_length++] = c;
        return true;
    }
    std::string_view View() const { return {_bytes.data(), _length}; }

private:
    std::array<char, kMost> _bytes{};
    std::size_t _length = 0;
};

} // namespace qxut
