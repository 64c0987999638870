// A block of bytes on the heap whose contents nobody has written yet.
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

    // Makes the block shorter; the memory stays as it is.
    void Truncate(std::size_t size) { _size = size < _size ? size : _size; }

private:
    std::unique_ptr<unsigned char[]> _data;
    std::size_t _size = 0;
};

} // namespace qx
