#pragma once

#include "containers/heap.h"

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>
#include <utility>

namespace qx
{

template <class T>
class WCValDList;

// A link of the ring. The list itself contains the one link without an element, which connects the last element to the
// first.
struct WCDListLink
{
    WCDListLink* next = this;
    WCDListLink* previous = this;
};

template <class T>
struct WCDListNode : WCDListLink
{
    template <class... Arguments>
    explicit WCDListNode(std::in_place_t, Arguments&&... arguments) : value(std::forward<Arguments>(arguments)...)
    {
    }

    T value;
};

template <class T>
class WCValDListIter
{
    using Node = WCDListNode<std::remove_const_t<T>>;

public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = std::remove_const_t<T>;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    WCValDListIter() = default;

    // Converts from the non-const iterator. This is a template so that it doesn't replace the copy constructor.
    template <std::same_as<std::remove_const_t<T>> Other>
    requires std::is_const_v<T> WCValDListIter(const WCValDListIter<Other>& other) : _link(other._link) {}

    T& operator*() const { return static_cast<Node*>(_link)->value; }
    T* operator->() const { return std::addressof(**this); }

    WCValDListIter& operator++()
    {
        _link = _link->next;
        return *this;
    }

    WCValDListIter operator++(int)
    {
        WCValDListIter before = *this;
        ++*this;
        return before;
    }

    WCValDListIter& operator--()
    {
        _link = _link->previous;
        return *this;
    }

    WCValDListIter operator--(int)
    {
        WCValDListIter before = *this;
        --*this;
        return before;
    }

    friend bool operator==(const WCValDListIter& a, const WCValDListIter& b) { return a._link == b._link; }

private:
    friend class WCValDList<std::remove_const_t<T>>;
    friend class WCValDListIter<const T>;

    explicit WCValDListIter(WCDListLink* link) : _link(link) {}

    WCDListLink* _link = nullptr;
};

template <class T>
using WCValConstDListIter = WCValDListIter<const T>;

// A doubly linked list with the same operations and results as the list in slist.h, and iterators in both directions.
template <class T>
class WCValDList
{
public:
    using Node = WCDListNode<T>;
    using value_type = T;
    using iterator = WCValDListIter<T>;
    using const_iterator = WCValConstDListIter<T>;

    WCValDList() = default;

    WCValDList(std::initializer_list<T> values) : WCValDList()
    {
        for (const T& value : values)
            Append(value);
    }

    WCValDList(const WCValDList& other) : WCValDList()
    {
        for (const T& value : other)
            Append(value);
    }

    WCValDList(WCValDList&& other) noexcept { TakeRing(other); }

    WCValDList& operator=(const WCValDList& other)
    {
        if (this != &other)
        {
            WCValDList copy(other);
            Clear();
            TakeRing(copy);
        }
        return *this;
    }

    WCValDList& operator=(WCValDList&& other) noexcept
    {
        if (this != &other)
        {
            Clear();
            TakeRing(other);
        }
        return *this;
    }

    ~WCValDList() { Clear(); }

    std::size_t Count() const { return _count; }
    bool IsEmpty() const { return _count == 0; }

    T& Append(const T& value) { return Emplace(value); }
    T& Append(T&& value) { return Emplace(std::move(value)); }

    template <class... Arguments>
    T& Emplace(Arguments&&... arguments)
    {
        return LinkBefore(&_ring, std::forward<Arguments>(arguments)...);
    }

    T& InsertHead(const T& value) { return LinkBefore(_ring.next, value); }
    T& InsertHead(T&& value) { return LinkBefore(_ring.next, std::move(value)); }

    // Returns the element at an index (clipped to the list), or null if the list is empty.
    T* At(std::ptrdiff_t index) { return _count ? std::addressof(NodeAt(index)->value) : nullptr; }
    const T* At(std::ptrdiff_t index) const { return _count ? std::addressof(NodeAt(index)->value) : nullptr; }

    T* First() { return At(0); }
    const T* First() const { return At(0); }
    T* Last() { return At(static_cast<std::ptrdiff_t>(_count)); }
    const T* Last() const { return At(static_cast<std::ptrdiff_t>(_count)); }

    // Removes and returns the element at an index (clipped to the list). Returns nothing if the list is empty.
    std::optional<T> TakeAt(std::ptrdiff_t index)
    {
        if (_count == 0)
            return std::nullopt;
        Node* node = NodeAt(index);
        std::optional<T> value(std::move(node->value));
        Unlink(node);
        return value;
    }

    // Returns the index of the first equal element, or -1.
    std::ptrdiff_t IndexOf(const T& value) const requires std::equality_comparable<T>
    {
        std::ptrdiff_t index = 0;
        for (const T& element : *this)
        {
            if (element == value)
                return index;
            ++index;
        }
        return -1;
    }

    bool Contains(const T& value) const requires std::equality_comparable<T> { return IndexOf(value) >= 0; }

    // Removes the first equal element. Returns true if there was one.
    bool Remove(const T& value) requires std::equality_comparable<T>
    {
        for (WCDListLink* link = _ring.next; link != &_ring; link = link->next)
        {
            if (static_cast<Node*>(link)->value == value)
            {
                Unlink(static_cast<Node*>(link));
                return true;
            }
        }
        return false;
    }

    // Removes all elements for which the predicate is true. Returns their number.
    template <class Predicate>
    std::size_t RemoveIf(Predicate predicate)
    {
        const std::size_t before = _count;
        for (WCDListLink* link = _ring.next; link != &_ring;)
        {
            Node* node = static_cast<Node*>(std::exchange(link, link->next));
            if (predicate(std::as_const(node->value)))
                Unlink(node);
        }
        return before - _count;
    }

    void Clear() noexcept
    {
        while (_ring.next != &_ring)
            Unlink(static_cast<Node*>(_ring.next));
    }

    template <class Visitor>
    void ForEach(Visitor visitor)
    {
        for (T& element : *this)
            visitor(element);
    }

    template <class Visitor>
    void ForEach(Visitor visitor) const
    {
        for (const T& element : *this)
            visitor(element);
    }

    iterator begin() { return iterator(_ring.next); }
    iterator end() { return iterator(&_ring); }
    const_iterator begin() const { return const_iterator(_ring.next); }
    const_iterator end() const { return const_iterator(const_cast<WCDListLink*>(&_ring)); }

private:
    template <class... Arguments>
    T& LinkBefore(WCDListLink* place, Arguments&&... arguments)
    {
        Node* node = new Node(std::in_place, std::forward<Arguments>(arguments)...);
        node->next = place;
        node->previous = place->previous;
        place->previous->next = node;
        place->previous = node;
        ++_count;
        return node->value;
    }

    void Unlink(Node* node) noexcept
    {
        node->previous->next = node->next;
        node->next->previous = node->previous;
        --_count;
        delete node;
    }

    // Searches from the nearer end. The list must not be empty.
    Node* NodeAt(std::ptrdiff_t index) const
    {
        const auto last = static_cast<std::ptrdiff_t>(_count) - 1;
        index = index < 0 ? 0 : index > last ? last : index;
        WCDListLink* link;
        if (index <= last / 2)
        {
            link = _ring.next;
            while (index-- > 0)
                link = link->next;
        }
        else
        {
            link = _ring.previous;
            while (index++ < last)
                link = link->previous;
        }
        return static_cast<Node*>(link);
    }

    void TakeRing(WCValDList& other) noexcept
    {
        if (other._count == 0)
            return;
        _ring.next = std::exchange(other._ring.next, &other._ring);
        _ring.previous = std::exchange(other._ring.previous, &other._ring);
        _ring.next->previous = &_ring;
        _ring.previous->next = &_ring;
        _count = std::exchange(other._count, 0);
    }

    WCDListLink _ring;
    std::size_t _count = 0;
};

} // namespace qx
