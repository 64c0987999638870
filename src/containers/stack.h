#pragma once

#include "containers/slist.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace qx
{

// A stack based on a list; the newest element is the first of the list.
template <class T, class List = WCValSList<T>>
class WCStack
{
public:
    std::size_t Count() const { return _list.Count(); }
    bool IsEmpty() const { return _list.IsEmpty(); }

    void Push(const T& value) { _list.InsertHead(value); }
    void Push(T&& value) { _list.InsertHead(std::move(value)); }

    // Removes and returns the newest element. Returns nothing if the stack is empty.
    std::optional<T> Pop() { return _list.TakeAt(0); }

    // Returns the newest element, or null.
    T* Top() { return _list.First(); }
    const T* Top() const { return _list.First(); }

    void Clear() { _list.Clear(); }

    // Iterates from the newest element to the oldest.
    auto begin() { return _list.begin(); }
    auto end() { return _list.end(); }
    auto begin() const { return _list.begin(); }
    auto end() const { return _list.end(); }

private:
    List _list;
};

} // namespace qx
