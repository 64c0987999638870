#pragma once

#include "containers/level_source.h"

#include <concepts>
#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace qx
{

inline constexpr unsigned kSkipListSelector = 3; // a node rises one level with probability 1/4
inline constexpr int kSkipListLevels = 8;
inline constexpr int kSkipListMostLevels = 20;

// A key and its value: the element type of dictionary iterators.
template <class K, class V>
struct WCKeyValue
{
    // Constructs each member from one argument, so that entries are created in place.
    template <class KeyArgument, class ValueArgument>
    WCKeyValue(KeyArgument&& keyArgument, ValueArgument&& valueArgument)
        : key(std::forward<KeyArgument>(keyArgument)),
          value(std::forward<ValueArgument>(valueArgument))
    {
    }

    const K key;
    V value;
};

// The levels, nodes and searches shared by all skip lists. `Entry` is the type stored in a node. `Order` compares two
// keys (Order::Less) and returns the key of an entry (Order::Key).
template <class Entry, class Order>
class WCSkipListBase
{
    // In memory a node is followed by its links, one for each level from 0 to its own. The head consists only of links
    // and is a separate array.
    struct alignas(void*) Node
    {
        Node*& Link(int onLevel) { return reinterpret_cast<Node**>(this + 1)[onLevel]; }

        Entry entry;
        int level;
    };

    template <class E>
    class Iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Entry;
        using difference_type = std::ptrdiff_t;
        using pointer = E*;
        using reference = E&;

        Iterator() = default;
        explicit Iterator(Node* node) : _node(node) {}
        template <std::same_as<Entry> Other>
        requires std::is_const_v<E> Iterator(const Iterator<Other>& other) : _node(other._node) {}

        explicit operator bool() const { return _node != nullptr; }
        E& operator*() const { return _node->entry; }
        E* operator->() const { return std::addressof(_node->entry); }

        Iterator& operator++()
        {
            _node = _node->Link(0);
            return *this;
        }

        Iterator operator++(int)
        {
            Iterator before = *this;
            ++*this;
            return before;
        }

        friend bool operator==(const Iterator& a, const Iterator& b) { return a._node == b._node; }

    private:
        friend class Iterator<const E>;
        Node* _node = nullptr;
    };

public:
    using iterator = Iterator<Entry>;
    using const_iterator = Iterator<const Entry>;

    std::size_t Count() const { return _count; }
    bool IsEmpty() const { return _count == 0; }
    unsigned Selector() const { return _selector; }
    int MostLevels() const { return _mostLevels; }

    // Return the number of levels in use, and the number of nodes on a level.
    int LevelsInUse() const { return _top + 1; }
    std::size_t CountOnLevel(int level) const
    {
        std::size_t count = 0;
        if (_head && level <= _top)
            for (Node* node = _head[level]; node; node = node->Link(level))
                ++count;
        return count;
    }

    void Clear() noexcept
    {
        Node* node = First();
        _head.reset();
        _top = 0;
        _count = 0;
        while (node)
            DeleteNode(std::exchange(node, node->Link(0)));
    }

    // Calls visitor(element) in ascending order.
    template <class Visitor>
    void ForEach(Visitor visitor) const
    {
        for (Node* node = First(); node; node = node->Link(0))
            visitor(std::as_const(node->entry));
    }

protected:
    WCSkipListBase(unsigned selector, int mostLevels)
        : _selector(selector == 1 ? 1 : 3),
          _mostLevels(mostLevels < 1                     ? 1
                      : mostLevels > kSkipListMostLevels ? kSkipListMostLevels
                                                         : mostLevels)
    {
    }

    WCSkipListBase(const WCSkipListBase& other) : WCSkipListBase(other._selector, other._mostLevels)
    {
        CopyNodes(other);
    }

    WCSkipListBase(WCSkipListBase&& other) noexcept : WCSkipListBase(other._selector, other._mostLevels)
    {
        Swap(other);
    }

    WCSkipListBase& operator=(const WCSkipListBase& other)
    {
        if (this != &other)
        {
            WCSkipListBase copy(other);
            Swap(copy);
        }
        return *this;
    }

    WCSkipListBase& operator=(WCSkipListBase&& other) noexcept
    {
        if (this != &other)
        {
            Clear();
            Swap(other);
        }
        return *this;
    }

    ~WCSkipListBase() { Clear(); }

    // The path to a position on level 0: for each level in use, the link that passes over the position.
    struct Path
    {
        Node** links[kSkipListMostLevels];
        Node* Next() const { return *links[0]; }
    };

    // Finds the position before the first entry whose key isn't less than `key`. With `behind`, finds the position
    // before the first entry whose key is greater, which is after all equal entries.
    template <class Key>
    Path FindPath(const Key& key, bool behind = false)
    {
        if (!_head)
            _head = std::make_unique<Node*[]>(static_cast<std::size_t>(_mostLevels));
        Path path;
        Node* node = nullptr;
        for (int level = _top; level >= 0; --level)
        {
            Node** link = node ? &node->Link(level) : &_head[level];
            while (*link && IsBefore((*link)->entry, key, behind))
            {
                node = *link;
                link = &node->Link(level);
            }
            path.links[level] = link;
        }
        return path;
    }

    template <class Key>
    Node* FindNode(const Key& key) const
    {
        Node* node = nullptr;
        Node* next = nullptr;
        for (int level = _head ? _top : -1; level >= 0; --level)
        {
            next = node ? node->Link(level) : _head[level];
            while (next && IsBefore(next->entry, key, false))
            {
                node = next;
                next = node->Link(level);
            }
        }
        return next && !Order::Less(key, Order::Key(next->entry)) ? next : nullptr;
    }

    // Inserts a new node at the position. A node above the highest level in use raises that level by one.
    template <class... Arguments>
    Node* InsertAt(Path& path, Arguments&&... arguments)
    {
        const int limit = _top + 1 < _mostLevels - 1 ? _top + 1 : _mostLevels - 1;
        const int level = WCLevelSource::Module().Draw(_selector, limit);
        Node* node = MakeNode(level, std::forward<Arguments>(arguments)...);
        if (level > _top)
        {
            _top = level;
            path.links[level] = &_head[level];
        }
        for (int i = 0; i <= level; ++i)
        {
            node->Link(i) = *path.links[i];
            *path.links[i] = node;
        }
        ++_count;
        return node;
    }

    // Returns true if the entry after the position (found without `behind`) has this key.
    template <class Key>
    bool HoldsAt(const Path& path, const Key& key) const
    {
        Node* next = path.Next();
        return next && !Order::Less(key, Order::Key(next->entry));
    }

    template <class Key>
    bool RemoveKey(const Key& key)
    {
        if (_count == 0)
            return false;
        const Path path = FindPath(key);
        if (!HoldsAt(path, key))
            return false;
        RemoveAt(path);
        return true;
    }

    // Removes and destroys the node after the position.
    void RemoveAt(const Path& path) noexcept
    {
        Node* node = path.Next();
        for (int i = 0; i <= node->level; ++i)
            *path.links[i] = node->Link(i);
        while (_top > 0 && !_head[_top])
            --_top;
        --_count;
        DeleteNode(node);
    }

    Node* First() const { return _head ? _head[0] : nullptr; }

private:
    template <class Key>
    static bool IsBefore(const Entry& entry, const Key& key, bool behind)
    {
        return behind ? !Order::Less(key, Order::Key(entry)) : Order::Less(Order::Key(entry), key);
    }

    template <class... Arguments>
    static Node* MakeNode(int level, Arguments&&... arguments)
    {
        static_assert(alignof(Node) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
        struct Block
        {
            ~Block() { ::operator delete(memory); }
            void* memory;
        } block{::operator new(sizeof(Node) + (static_cast<std::size_t>(level) + 1) * sizeof(Node*))};
        Node* node = ::new (block.memory) Node{Entry(std::forward<Arguments>(arguments)...), level};
        block.memory = nullptr;
        for (int i = 0; i <= level; ++i)
            ::new (static_cast<void*>(&node->Link(i))) Node*(nullptr);
        return node;
    }

    static void DeleteNode(Node* node) noexcept
    {
        node->~Node();
        ::operator delete(static_cast<void*>(node));
    }

    // Copies the level of each node as well, so the copy takes one pass and no random bits.
    void CopyNodes(const WCSkipListBase& other)
    {
        if (other._count == 0)
            return;
        _head = std::make_unique<Node*[]>(static_cast<std::size_t>(_mostLevels));
        _top = other._top;
        Path tails;
        for (int level = 0; level <= _top; ++level)
            tails.links[level] = &_head[level];
        for (Node* from = other.First(); from; from = from->Link(0))
        {
            Node* node = MakeNode(from->level, std::as_const(from->entry));
            for (int level = 0; level <= node->level; ++level)
            {
                *tails.links[level] = node;
                tails.links[level] = &node->Link(level);
            }
            ++_count;
        }
    }

    void Swap(WCSkipListBase& other) noexcept
    {
        std::swap(_selector, other._selector);
        std::swap(_mostLevels, other._mostLevels);
        std::swap(_top, other._top);
        std::swap(_count, other._count);
        std::swap(_head, other._head);
    }

    unsigned _selector;
    int _mostLevels;
    int _top = 0; // the highest level in use
    std::size_t _count = 0;
    std::unique_ptr<Node*[]> _head; // one link per level; null until the first insertion
};

// The orders used by the containers below.

template <class T>
struct WCElementOrder
{
    static const T& Key(const T& element) { return element; }
    static bool Less(const T& a, const T& b)
    {
        if constexpr (std::is_pointer_v<T>)
            return std::less<T>()(a, b);
        else
            return a < b;
    }
};

template <class K, class V>
struct WCKeyOrder
{
    static const K& Key(const WCKeyValue<K, V>& entry) { return entry.key; }
    static bool Less(const K& a, const K& b) { return WCElementOrder<K>::Less(a, b); }
};

template <class T>
struct WCPointeeOrder
{
    static const T& Key(T* element) { return *element; }
    static bool Less(const T& a, const T& b) { return a < b; }
};

// A list in ascending order by operator<. Duplicates are allowed and keep their insertion order.
template <class T>
class WCValSkipList : public WCSkipListBase<T, WCElementOrder<T>>
{
    using Base = WCSkipListBase<T, WCElementOrder<T>>;

public:
    explicit WCValSkipList(unsigned selector = kSkipListSelector, int mostLevels = kSkipListLevels)
        : Base(selector, mostLevels)
    {
    }

    const T& Insert(T value)
    {
        auto path = this->FindPath(value, true);
        return this->InsertAt(path, std::move(value))->entry;
    }

    // Returns the first of the equal elements, or null.
    const T* Find(const T& value) const
    {
        auto* node = this->FindNode(value);
        return node ? std::addressof(node->entry) : nullptr;
    }

    bool Contains(const T& value) const { return Find(value) != nullptr; }

    // Removes the first of the equal elements. Returns true if there was one.
    bool Remove(const T& value) { return this->RemoveKey(value); }

    auto begin() const { return typename Base::const_iterator(this->First()); }
    auto end() const { return typename Base::const_iterator(); }
};

// A set in ascending order by operator<, without duplicates.
template <class T>
class WCValSkipListSet : public WCSkipListBase<T, WCElementOrder<T>>
{
    using Base = WCSkipListBase<T, WCElementOrder<T>>;

public:
    explicit WCValSkipListSet(unsigned selector = kSkipListSelector, int mostLevels = kSkipListLevels)
        : Base(selector, mostLevels)
    {
    }

    // Returns false if the set already contains an equal element, which is kept.
    bool Insert(T value)
    {
        auto path = this->FindPath(value);
        if (this->HoldsAt(path, value))
            return false;
        this->InsertAt(path, std::move(value));
        return true;
    }

    // Returns the equal element, inserting one if necessary.
    const T& FindOrInsert(const T& value)
    {
        auto path = this->FindPath(value);
        return this->HoldsAt(path, value) ? path.Next()->entry : this->InsertAt(path, value)->entry;
    }

    const T* Find(const T& value) const
    {
        auto* node = this->FindNode(value);
        return node ? std::addressof(node->entry) : nullptr;
    }

    bool Contains(const T& value) const { return Find(value) != nullptr; }

    bool Remove(const T& value) { return this->RemoveKey(value); }

    auto begin() const { return typename Base::const_iterator(this->First()); }
    auto end() const { return typename Base::const_iterator(); }
};

// A dictionary in ascending order by the keys' operator<, without duplicate keys.
template <class K, class V>
class WCValSkipListDict : public WCSkipListBase<WCKeyValue<K, V>, WCKeyOrder<K, V>>
{
    using Base = WCSkipListBase<WCKeyValue<K, V>, WCKeyOrder<K, V>>;

public:
    explicit WCValSkipListDict(unsigned selector = kSkipListSelector, int mostLevels = kSkipListLevels)
        : Base(selector, mostLevels)
    {
    }

    // Returns false if the key already exists; its value is kept.
    bool Insert(K key, V value)
    {
        auto path = this->FindPath(key);
        if (this->HoldsAt(path, key))
            return false;
        this->InsertAt(path, std::move(key), std::move(value));
        return true;
    }

    // Returns the value of a key, inserting a default-constructed value if necessary.
    V& operator[](const K& key)
    {
        auto path = this->FindPath(key);
        return this->HoldsAt(path, key) ? path.Next()->entry.value : this->InsertAt(path, key, V())->entry.value;
    }

    // Returns the value of a key, or null.
    V* Find(const K& key)
    {
        auto* node = this->FindNode(key);
        return node ? std::addressof(node->entry.value) : nullptr;
    }

    const V* Find(const K& key) const { return const_cast<WCValSkipListDict*>(this)->Find(key); }

    bool Contains(const K& key) const { return Find(key) != nullptr; }

    bool Remove(const K& key) { return this->RemoveKey(key); }

    auto begin() { return typename Base::iterator(this->First()); }
    auto end() { return typename Base::iterator(); }
    auto begin() const { return typename Base::const_iterator(this->First()); }
    auto end() const { return typename Base::const_iterator(); }
};

// A set of pointers, ordered by the objects they point to. It doesn't own the objects. They must not change their
// position in the order while they are in the set. Null pointers are rejected.
template <class T>
class WCPtrSkipListSet : public WCSkipListBase<T*, WCPointeeOrder<T>>
{
    using Base = WCSkipListBase<T*, WCPointeeOrder<T>>;

public:
    explicit WCPtrSkipListSet(unsigned selector = kSkipListSelector, int mostLevels = kSkipListLevels)
        : Base(selector, mostLevels)
    {
    }

    // Returns false if the pointer is null, or if the set already contains a pointer to an equal element, which is
    // kept.
    bool Insert(T* element)
    {
        if (!element)
            return false;
        auto path = this->FindPath(*element);
        if (this->HoldsAt(path, *element))
            return false;
        this->InsertAt(path, element);
        return true;
    }

    // Returns the pointer to the equal element, or null.
    T* Find(const T& element) const
    {
        auto* node = this->FindNode(element);
        return node ? node->entry : nullptr;
    }

    bool Contains(const T& element) const { return Find(element) != nullptr; }

    bool Remove(const T& element) { return this->RemoveKey(element); }

    auto begin() const { return typename Base::const_iterator(this->First()); }
    auto end() const { return typename Base::const_iterator(); }
};

} // namespace qx
