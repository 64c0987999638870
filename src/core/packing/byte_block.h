// A heap block of bytes that is not initialised.
#pragma once

#include <cstddef>
#include <memory>

namespace qx
{

class ByteBlock
{
public:
    ByteBlock() = default;
    explicit ByteBlock(std::size_t size) : _data(std::make_unique_for_overwrite<unsigned char[]>(size)), _size(size) {}

    unsigned char* data() { return _data.get(); }
    const unsigned char* data() const { return _data.get(); }
    std::size_t size() const { return _size; }

    // Reduces the size of the block. The memory isn't reallocated.
    void Truncate(std::size_t size) { _size = size < _size ? size : _size; }

private:
    std::unique_ptr<unsigned char[]> _data;
    std::size_t _size = 0;
};

} // namespace qx
