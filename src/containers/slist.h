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

template <class T, class Memory>
class WCValSList;

template <class T>
struct WCSListNode
{
    WCSListNode* next;
    T value;
};

// Iterates from the first element to the last. After the last element, and for an empty list, the iterator is false and
// equal to end(). Elements appended during the iteration are visited. Removing the current element invalidates the
// iterator.
//
//     for (WCValSListIter it(list); it; ++it)        for (auto& element : list)
template <class T>
class WCValSListIter
{
    using Element = std::remove_const_t<T>;
    using Node = WCSListNode<Element>;

public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    WCValSListIter() = default;

    template <class Memory>
    explicit WCValSListIter(WCValSList<Element, Memory>& list) : WCValSListIter(list.begin())
    {
    }

    template <class Memory>
    requires std::is_const_v<T>
    explicit WCValSListIter(const WCValSList<Element, Memory>& list) : WCValSListIter(list.begin()) {}

    // Converts from the non-const iterator. This is a template so that it doesn't replace the copy constructor.
    template <std::same_as<Element> Other>
    requires std::is_const_v<T> WCValSListIter(const WCValSListIter<Other>& other)
        : _last(other._last),
          _node(other._node)
    {
    }

    explicit operator bool() const { return _node != nullptr; }
    T& operator*() const { return _node->value; }
    T* operator->() const { return std::addressof(_node->value); }

    WCValSListIter& operator++()
    {
        _node = _node == *_last ? nullptr : _node->next;
        return *this;
    }

    WCValSListIter operator++(int)
    {
        WCValSListIter before = *this;
        ++*this;
        return before;
    }

    friend bool operator==(const WCValSListIter& a, const WCValSListIter& b) { return a._node == b._node; }

private:
    template <class, class>
    friend class WCValSList;
    template <class>
    friend class WCValSListIter;

    WCValSListIter(Node* const* last, Node* node) : _last(last), _node(node) {}

    Node* const* _last = nullptr;
    Node* _node = nullptr;
};

template <class T, class Memory>
WCValSListIter(WCValSList<T, Memory>&) -> WCValSListIter<T>;
template <class T, class Memory>
WCValSListIter(const WCValSList<T, Memory>&) -> WCValSListIter<const T>;

template <class T>
using WCValConstSListIter = WCValSListIter<const T>;

// A singly linked ring, addressed by its last element, so that both head and tail are one step away. It keeps the
// insertion order; duplicates are allowed. Indexes are clipped to the existing elements, so only an empty list has no
// element for an index.
template <class T, class Memory = WCHeap>
class WCValSList
{
public:
    using Node = WCSListNode<T>;
    using value_type = T;
    using iterator = WCValSListIter<T>;
    using const_iterator = WCValConstSListIter<T>;

    WCValSList() = default;

    WCValSList(std::initializer_list<T> values) : WCValSList()
    {
        for (const T& value : values)
            Append(value);
    }

    WCValSList(const WCValSList& other) : WCValSList()
    {
        for (const T& value : other)
            Append(value);
    }

    WCValSList(WCValSList&& other) noexcept { TakeRing(other); }

    WCValSList& operator=(const WCValSList& other)
    {
        if (this != &other)
        {
            WCValSList copy(other);
            Clear();
            TakeRing(copy);
        }
        return *this;
    }

    WCValSList& operator=(WCValSList&& other) noexcept
    {
        if (this != &other)
        {
            Clear();
            TakeRing(other);
        }
        return *this;
    }

    // Vtable order of the virtual functions: destructor, ReleaseNode, AreEqual. A class that overrides ReleaseNode must
    // call Clear in its own destructor, because its override no longer exists here.
    virtual ~WCValSList() { Clear(); }

    std::size_t Count() const { return _count; }
    bool IsEmpty() const { return _count == 0; }

    T& Append(const T& value) { return Emplace(value); }
    T& Append(T&& value) { return Emplace(std::move(value)); }

    // Appends an element that is constructed in place.
    template <class... Arguments>
    T& Emplace(Arguments&&... arguments)
    {
        Node* node = MakeNode(std::forward<Arguments>(arguments)...);
        AppendNode(node);
        return node->value;
    }

    T& InsertHead(const T& value) { return LinkBehindLast(MakeNode(value))->value; }
    T& InsertHead(T&& value) { return LinkBehindLast(MakeNode(std::move(value)))->value; }

    // Returns the element at an index, or null if the list is empty.
    T* At(std::ptrdiff_t index) { return const_cast<T*>(std::as_const(*this).At(index)); }
    const T* At(std::ptrdiff_t index) const
    {
        if (!_last)
            return nullptr;
        if (ClippedIndex(index) == _count - 1)
            return std::addressof(_last->value);
        return std::addressof(NodeBefore(ClippedIndex(index))->next->value);
    }

    T* First() { return At(0); }
    const T* First() const { return At(0); }
    T* Last() { return _last ? std::addressof(_last->value) : nullptr; }
    const T* Last() const { return _last ? std::addressof(_last->value) : nullptr; }

    // Removes and returns the element at an index without calling ReleaseNode. Returns nothing if the list is empty.
    std::optional<T> TakeAt(std::ptrdiff_t index)
    {
        if (!_last)
            return std::nullopt;
        Node* before = NodeBefore(ClippedIndex(index));
        std::optional<T> value(std::move(before->next->value));
        DeleteNode(Unlink(before));
        return value;
    }

    // Moves the element at an index, with its node, to the end of another list. Returns null if the list is empty. The
    // nodes of both lists must have been allocated by WCValSList itself.
    T* MoveAt(std::ptrdiff_t index, WCValSList& target) noexcept
    {
        if (!_last)
            return nullptr;
        Node* node = Unlink(NodeBefore(ClippedIndex(index)));
        target.AppendNode(node);
        return std::addressof(node->value);
    }

    // Returns the index of the first equal element, or -1.
    std::ptrdiff_t IndexOf(const T& value) const
    {
        std::ptrdiff_t index = 0;
        for (const T& element : *this)
        {
            if (AreEqual(element, value))
                return index;
            ++index;
        }
        return -1;
    }

    bool Contains(const T& value) const { return IndexOf(value) >= 0; }

    // Removes the first equal element. Returns true if there was one.
    bool Remove(const T& value)
    {
        return RemoveWhere([&](const T& element) { return AreEqual(element, value); }, 1) != 0;
    }

    // Removes all elements for which the predicate is true. Returns their number.
    template <class Predicate>
    std::size_t RemoveIf(Predicate predicate)
    {
        return RemoveWhere(predicate, _count);
    }

    // Releases all nodes. The list is empty before the first node is released, so ReleaseNode may use the list.
    void Clear() noexcept
    {
        Node* last = std::exchange(_last, nullptr);
        _count = 0;
        if (!last)
            return;
        Node* node = std::exchange(last->next, nullptr);
        while (node)
        {
            Node* next = node->next;
            ReleaseNode(node);
            node = next;
        }
    }

    // Calls visitor(element) for each element in order.
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

    iterator begin() { return iterator(&_last, Head()); }
    iterator end() { return iterator(&_last, nullptr); }
    const_iterator begin() const { return const_iterator(&_last, Head()); }
    const_iterator end() const { return const_iterator(&_last, nullptr); }

protected:
    // For derived classes whose elements provide their own nodes: links the node at the end. Such a class overrides
    // ReleaseNode.
    void AppendNode(Node* node) noexcept
    {
        LinkBehindLast(node);
        _last = node;
    }

    // Transfers ownership of all nodes to the caller. Returns the last node of the ring.
    Node* AbandonNodes() noexcept
    {
        _count = 0;
        return std::exchange(_last, nullptr);
    }

    // Returns the last node, or null. The first node follows it.
    Node* LastNode() const { return _last; }

    // Unlinks the node after `before` from the ring and returns it.
    Node* Unlink(Node* before) noexcept
    {
        Node* node = before->next;
        before->next = node->next;
        if (node == _last)
            _last = node == before ? nullptr : before;
        --_count;
        return node;
    }

    // Releases a node along with its element (for Clear, Remove, RemoveIf and the destructor). An override cleans up
    // the element and then calls this function with the node.
    virtual void ReleaseNode(Node* node) noexcept { DeleteNode(node); }

    // Elements without operator== are only equal to themselves.
    virtual bool AreEqual(const T& a, const T& b) const
    {
        if constexpr (std::equality_comparable<T>)
            return a == b;
        else
            return std::addressof(a) == std::addressof(b);
    }

private:
    template <class... Arguments>
    static Node* MakeNode(Arguments&&... arguments)
    {
        static_assert(alignof(Node) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
        struct Block
        {
            ~Block() { Memory::Release(memory); }
            void* memory = Memory::Allocate(sizeof(Node));
        } block;
        Node* node = ::new (block.memory) Node{nullptr, T(std::forward<Arguments>(arguments)...)};
        block.memory = nullptr;
        return node;
    }

    static void DeleteNode(Node* node) noexcept
    {
        node->~Node();
        Memory::Release(node);
    }

    Node* Head() const { return _last ? _last->next : nullptr; }

    std::size_t ClippedIndex(std::ptrdiff_t index) const
    {
        if (index <= 0)
            return 0;
        const auto wanted = static_cast<std::size_t>(index);
        return wanted < _count ? wanted : _count - 1;
    }

    Node* NodeBefore(std::size_t index) const
    {
        Node* node = _last;
        while (index-- > 0)
            node = node->next;
        return node;
    }

    // Inserts a node between the last and the first element. It becomes the first element, unless the caller makes it
    // the last.
    Node* LinkBehindLast(Node* node) noexcept
    {
        if (_last)
        {
            node->next = _last->next;
            _last->next = node;
        }
        else
        {
            node->next = node;
            _last = node;
        }
        ++_count;
        return node;
    }

    template <class Predicate>
    std::size_t RemoveWhere(Predicate predicate, std::size_t limit)
    {
        std::size_t removed = 0;
        Node* before = _last;
        for (std::size_t left = _count; left > 0 && removed < limit; --left)
        {
            if (predicate(std::as_const(before->next->value)))
            {
                ReleaseNode(Unlink(before));
                ++removed;
            }
            else
            {
                before = before->next;
            }
        }
        return removed;
    }

    void TakeRing(WCValSList& other) noexcept
    {
        _last = std::exchange(other._last, nullptr);
        _count = std::exchange(other._count, 0);
    }

    Node* _last = nullptr;
    std::size_t _count = 0;
};

// A list of pointers. It doesn't own the objects; two elements are equal if they are the same pointer.
template <class T, class Memory = WCHeap>
using WCPtrSList = WCValSList<T*, Memory>;

} // namespace qx
