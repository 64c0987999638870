// The output of a conversion: writes what fits in the caller's buffer, and counts all units.
#pragma once

#include <algorithm>
#include <cstddef>

namespace qxplatform
{

template <class Unit>
class Output
{
public:
    // With a size of 0 it only counts, which is how callers query the required size.
    Output(Unit* buffer, std::size_t size) : _buffer(buffer), _size(size) {}

    void Put(Unit unit)
    {
        if (_count < _size)
            _buffer[_count] = unit;
        ++_count;
    }

    // For runs with equal input and output length: the available room is checked once.
    template <class Source, class Convert>
    void PutAll(const Source* source, std::size_t length, Convert convert)
    {
        const std::size_t room = _count < _size ? _size - _count : 0;
        const std::size_t written = std::min(length, room);
        for (std::size_t i = 0; i < written; ++i)
            _buffer[_count + i] = convert(source[i]);
        _count += length;
    }

    std::size_t Count() const { return _count; }
    bool Fits() const { return _size == 0 || _count <= _size; }

private:
    Unit* _buffer;
    std::size_t _size;
    std::size_t _count = 0;
};

using WideOutput = Output<wchar_t>;
using ByteOutput = Output<char>;

} // namespace qxplatform
