// Closes a file descriptor at the end of its scope.
#pragma once

#include <utility>

#include <unistd.h>

namespace qxplatform
{

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

} // namespace qxplatform
