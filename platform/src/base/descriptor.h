// A file descriptor, and read and write loops that handle interrupted and partial transfers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace qxplatform
{

// Closes the descriptor at the end of its scope.
class Descriptor
{
public:
    explicit Descriptor(int descriptor = -1) : _descriptor(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : _descriptor(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(_descriptor, other._descriptor);
        return *this;
    }
    ~Descriptor()
    {
        if (_descriptor >= 0)
            close(_descriptor);
    }

    int Get() const { return _descriptor; }
    int Release() { return std::exchange(_descriptor, -1); }
    explicit operator bool() const { return _descriptor >= 0; }

private:
    int _descriptor;
};

// These functions return false and set errno on failure.

// Appends the remaining bytes, up to the end of the file or until the limit is exceeded.
bool ReadAll(int file, std::string& bytes, std::size_t limit = SIZE_MAX);
bool WriteAll(int file, std::string_view bytes);
// Like flock().
bool Lock(int file, int operation);

} // namespace qxplatform
