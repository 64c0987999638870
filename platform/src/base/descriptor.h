// A file descriptor, and what is done with one in a loop because signals interrupt it or it takes a part only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace qxplatform
{

// Closes it at the end of its scope.
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

// All of these are false, with errno, if they fail.

// Appends what follows, up to the end or until there is more than the limit.
bool ReadAll(int file, std::string& bytes, std::size_t limit = SIZE_MAX);
bool WriteAll(int file, std::string_view bytes);
// As flock().
bool Lock(int file, int operation);

} // namespace qxplatform
