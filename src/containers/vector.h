#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

namespace qx
{

// A dynamic array without spare capacity. Every resize allocates a new block and copies the remaining elements, so the
// array takes no more memory than its elements need.
template <class T>
class WCValVector
{
    static_assert(!std::is_same_v<T, bool>, "packed bits have no references to give");

public:
    using value_type = T;

    WCValVector() = default;
    explicit WCValVector(std::size_t count) : _block(count) {}
    WCValVector(const WCValVector&) = default;
    WCValVector(WCValVector&& other) noexcept : _block(std::exchange(other._block, {})) {}
    WCValVector& operator=(const WCValVector&) = default;
    WCValVector& operator=(WCValVector&& other) noexcept
    {
        if (this != &other)
            _block = std::exchange(other._block, {});
        return *this;
    }
    ~WCValVector() = default;

    std::size_t Count() const { return _block.size(); }
    bool IsEmpty() const { return _block.empty(); }

    // Keeps at most the first `count` elements and default-constructs the missing ones. If an exception is thrown, the
    // array is unchanged, provided that copying or moving its elements doesn't throw.
    void Resize(std::size_t count)
    {
        std::vector<T> block;
        block.reserve(count);
        const std::size_t kept = count < Count() ? count : Count();
        for (std::size_t i = 0; i < kept; ++i)
            block.push_back(std::move_if_noexcept(_block[i]));
        block.resize(count);
        _block.swap(block);
    }

    // Grows the array if necessary. Throws std::length_error if the index is too large. That includes the largest
    // index, for which index + 1 would overflow.
    T& operator[](std::size_t index)
    {
        if (index >= Count())
            Resize(std::max(index, index + 1));
        return _block[index];
    }

    // Returns the element at an index, or null past the end.
    T* At(std::size_t index) { return index < Count() ? _block.data() + index : nullptr; }
    const T* At(std::size_t index) const { return index < Count() ? _block.data() + index : nullptr; }

    void Clear() { _block = {}; }

    T* begin() { return _block.data(); }
    T* end() { return _block.data() + _block.size(); }
    const T* begin() const { return _block.data(); }
    const T* end() const { return _block.data() + _block.size(); }

private:
    std::vector<T> _block;
};

} // namespace qx
