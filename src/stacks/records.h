// The records of frames and modules, which other modules read, and the lists of them.
#pragma once

#include "containers/dlist.h"

#include <qxut23/stacks.h>

#include <unknwn.h>
#include <windows.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace qx
{

static_assert(sizeof(DBGParameter) == 80 && offsetof(DBGParameter, kind) == 0 && offsetof(DBGParameter, isLocal) == 4);
static_assert(offsetof(DBGParameter, value) == 8 && offsetof(DBGParameter, name) == 16);

static_assert(sizeof(DBGStackTraceItem) == 9432 && offsetof(DBGStackTraceItem, size) == 0);
static_assert(offsetof(DBGStackTraceItem, addressOnly) == 4 && offsetof(DBGStackTraceItem, address) == 8);
static_assert(offsetof(DBGStackTraceItem, symbol) == 16 && offsetof(DBGStackTraceItem, name) == 1040);
static_assert(offsetof(DBGStackTraceItem, fullName) == 2064 && offsetof(DBGStackTraceItem, displacement) == 3088);
static_assert(offsetof(DBGStackTraceItem, lineDisplacement) == 3096 && offsetof(DBGStackTraceItem, line) == 3100);
static_assert(offsetof(DBGStackTraceItem, file) == 3104 && offsetof(DBGStackTraceItem, symbolType) == 3364);
static_assert(offsetof(DBGStackTraceItem, moduleBase) == 4392 && offsetof(DBGStackTraceItem, module) == 4400);
static_assert(offsetof(DBGStackTraceItem, parameterCount) == 5424);
static_assert(offsetof(DBGStackTraceItem, parameters) == 5432);

static_assert(sizeof(DBGModuleItem) == 832 && offsetof(DBGModuleItem, size) == 0);
static_assert(offsetof(DBGModuleItem, path) == 4 && offsetof(DBGModuleItem, name) == 264);
static_assert(offsetof(DBGModuleItem, symbolType) == 524 && offsetof(DBGModuleItem, base) == 560);
static_assert(offsetof(DBGModuleItem, imageSize) == 568 && offsetof(DBGModuleItem, description) == 572);
static_assert(offsetof(DBGModuleItem, company) == 636 && offsetof(DBGModuleItem, version) == 700);

inline constexpr int kMostParameters = 50;

// A set of parameters of a record: one bit for each, the lowest for the first parameter.
using ParameterSet = std::uint64_t;
static_assert(kMostParameters <= 64);

// The kinds of parameter values.
enum ParameterKind : std::uint32_t
{
    kHex32 = 0,
    kHex64 = 1,
    kInt32 = 2,
    kInt64 = 3,
    kReal = 4,
    kNarrowText = 5,
    kWideText = 6,
    kBstrText = 7,
    kPointer = 8,
};

// Copies a text to a field, truncating it if necessary.
template <std::size_t Size>
void CopyToField(std::string_view text, char (&field)[Size])
{
    const std::size_t length = text.size() < Size ? text.size() : Size - 1;
    std::memcpy(field, text.data(), length);
    field[length] = 0;
}

// A list of records with a position. Clones share the records.
template <class Interface, class Item>
class clsDBGList : public Interface
{
public:
    clsDBGList() : _items(std::make_shared<Items>()) { Rewind(); }
    clsDBGList(const clsDBGList&) = delete;
    clsDBGList& operator=(const clsDBGList&) = delete;

    QXHRESULT QXUT_COMCALL QueryInterface(const struct _GUID& iid, void** object) override
    {
        if (!object)
            return E_POINTER;
        *object = nullptr;
        if (std::memcmp(&iid, &IID_IUnknown, sizeof IID_IUnknown) != 0)
            return E_NOINTERFACE;
        AddRef();
        *object = static_cast<Interface*>(this);
        return S_OK;
    }
    QXULONG QXUT_COMCALL AddRef() override { return ++_references; }
    QXULONG QXUT_COMCALL Release() override
    {
        const QXULONG left = --_references;
        if (left == 0)
            delete this;
        return left;
    }

    QXHRESULT QXUT_COMCALL Next(QXULONG count, Item** items, QXULONG* fetched) override
    {
        QXULONG done = 0;
        for (; items && done < count && _position != _items->list.end(); ++_position)
            items[done++] = *_position;
        if (fetched)
            *fetched = done;
        return done == count ? S_OK : S_FALSE;
    }
    QXHRESULT QXUT_COMCALL Skip(QXULONG count) override
    {
        for (; count > 0 && _position != _items->list.end(); --count)
            ++_position;
        return count == 0 ? S_OK : S_FALSE;
    }
    QXHRESULT QXUT_COMCALL Reset() override
    {
        Rewind();
        return S_OK;
    }
    QXHRESULT QXUT_COMCALL Clone(Interface** clone) override
    {
        if (!clone)
            return E_POINTER;
        *clone = nullptr;
        try
        {
            *clone = new clsDBGList(_items);
            return S_OK;
        }
        catch (const std::bad_alloc&)
        {
            return E_OUTOFMEMORY;
        }
    }
    std::int32_t QXUT_COMCALL IsEmpty() override { return _items->list.IsEmpty() ? 1 : 0; }

    // The last slot of the vtable, after the functions of the interface.
    virtual ~clsDBGList() = default;

    void Append(std::unique_ptr<Item> item)
    {
        _items->list.Append(item.get());
        item.release();
        Rewind();
    }

    // Inserts an item before the first one with a higher base address.
    void InsertByBase(std::unique_ptr<Item> item)
    {
        WCValDList<Item*> sorted;
        bool isInserted = false;
        for (Item* const other : _items->list)
        {
            if (!isInserted && other->base > item->base)
            {
                sorted.Append(item.get());
                isInserted = true;
            }
            sorted.Append(other);
        }
        if (!isInserted)
            sorted.Append(item.get());
        _items->list = std::move(sorted);
        item.release();
        Rewind();
    }

    // Returns a new list that shares the items of this one.
    clsDBGList* Share() const { return new clsDBGList(_items); }

    const WCValDList<Item*>& Records() const { return _items->list; }

protected:
    struct Items
    {
        Items() = default;
        Items(const Items&) = delete;
        Items& operator=(const Items&) = delete;
        ~Items()
        {
            for (Item* const item : list)
                delete item;
        }

        WCValDList<Item*> list;
    };

    explicit clsDBGList(std::shared_ptr<Items> items) : _items(std::move(items)) { Rewind(); }

private:
    void Rewind() { _position = _items->list.begin(); }

    std::atomic<QXULONG> _references = 1;
    std::shared_ptr<Items> _items;
    typename WCValDList<Item*>::iterator _position;
};

using clsDBGStackTraceList = clsDBGList<IDBGStackTraceList, DBGStackTraceItem>;
using clsDBGModuleList = clsDBGList<IDBGModuleList, DBGModuleItem>;

struct ReleaseList
{
    template <class List>
    void operator()(List* list) const
    {
        list->Release();
    }
};
using StackTraceListPtr = std::unique_ptr<clsDBGStackTraceList, ReleaseList>;
using ModuleListPtr = std::unique_ptr<clsDBGModuleList, ReleaseList>;

} // namespace qx
