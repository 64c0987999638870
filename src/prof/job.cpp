#include "prof/job.h"

#include "core/registry/registry.h"
#include "core/text/characters.h"
#include "core/text/text_hash.h"
#include "module/module_paths.h"
#include "prof/values.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

namespace qx
{

namespace
{

// Returns the setting that enables the cache. Reading it creates its registry key, so that users can find where to set
// it.
bool ReadCacheSwitch()
{
    const String key = String(L"software\\trelmo\\trlmut\\") + ProcessBaseName();
    clsRegistryList settings(HKEY_CURRENT_USER, key, 0);
    bool isEnabled = true;
    settings.GetBool(L"ProfCacheEnabled", isEnabled, true);
    return isEnabled;
}

// Throws if a text is too long: exported functions return lengths, which must fit 31 bits.
void CheckLength(std::wstring_view text)
{
    if (text.size() > String::kAll)
        throw std::length_error("profile text");
}

} // namespace

clsProfJob::clsProfJob(ProfMode mode, std::wstring_view rootName, std::uint32_t objectLevel)
    : _mode(mode),
      _root(*this, nullptr, *_names.Intern(rootName, TextHash(rootName))),
      _objectLevel(objectLevel),
      _isCacheEnabled(ReadCacheSwitch())
{
    _fileName.Reserve(256);
}

void clsProfJob::Release()
{
    if (_references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

const scProfText* clsProfJob::SharedName(std::wstring_view name)
{
    CheckLength(name);
    return _isCacheEnabled ? _names.Intern(name, TextHash(name)) : nullptr;
}

const scProfText& clsProfJob::InternName(std::wstring_view name)
{
    const scProfText* shared = SharedName(name);
    return shared != nullptr ? *shared : *NewProfText(_arena, name, TextHash(name), false);
}

// Returns the shared text of the value, or null if such values aren't shared.
const scProfText* clsProfJob::InternValue(std::wstring_view value)
{
    return _isCacheEnabled && IsInternedValue(value) ? _values.Intern(value, TextHash(value)) : nullptr;
}

clsItem& clsProfJob::NewItem(std::wstring_view name)
{
    const scProfText& text = InternName(name);
    return *::new (_arena.Allocate(sizeof(clsItem))) clsItem(text);
}

clsItem& clsProfJob::NewLeaf(const scProfText& sharedName, std::wstring_view value)
{
    clsItem& item = *::new (_arena.Allocate(sizeof(clsItem))) clsItem(sharedName);
    SetValue(item, value);
    return item;
}

clsItem& clsProfJob::NewLeaf(std::wstring_view name, std::wstring_view value)
{
    clsItem& item = NewItem(name);
    SetValue(item, value);
    return item;
}

clsItem& clsProfJob::NewLeafInImage(std::wstring_view name, const wchar_t* value, std::size_t length)
{
    clsItem& item = NewItem(name);
    item._value = value;
    item._valueLength = static_cast<std::uint32_t>(length);
    return item;
}

clsItem& clsProfJob::NewList(clsItemList& parent, std::wstring_view name)
{
    if (name.starts_with(L'['))
    {
        name.remove_prefix(1);
        name = name.substr(0, name.empty() ? 0 : name.size() - 1);
    }
    clsItem& item = NewItem(name);
    item.BecomeEntryOf(*::new (_arena.Allocate(sizeof(clsItemList))) clsItemList(*this, &parent, item.Name()));
    return item;
}

// Not recursive, because a file may nest lists to any depth. The items of a list are inserted at the front of the chain
// of items still to be released.
void clsProfJob::ReleaseItem(clsItem& first) noexcept
{
    WCSListNode<clsItem*>* pending = &first._node;
    pending->next = nullptr;
    while (pending != nullptr)
    {
        clsItem& item = *pending->value;
        pending = pending->next;
        if (clsItemList* list = item.List())
        {
            list->ForgetIndex();
            if (WCSListNode<clsItem*>* last = list->AbandonNodes())
                pending = std::exchange(last->next, pending);
            list->~clsItemList();
            _arena.Release(list, sizeof(clsItemList));
        }
        else
            ReleaseValue(item);
        ReleaseProfText(_arena, &item.Name());
        item.~clsItem();
        _arena.Release(&item, sizeof(clsItem));
    }
}

void clsProfJob::ReleaseValue(clsItem& item) noexcept
{
    if (item.HasSharedValue())
        _values.Release(scProfText::Of(item._value));
    else if (item._valueRoom != 0)
        _arena.Release(const_cast<wchar_t*>(item._value), item._valueRoom * sizeof(wchar_t));
    item._value = L"";
    item._valueLength = 0;
    item._valueRoom = 0;
}

// `value` may point into the old value, for example if it comes from the callback of an enumeration.
void clsProfJob::SetValue(clsItem& leaf, std::wstring_view value)
{
    CheckLength(value);
    if (const scProfText* shared = InternValue(value))
    {
        ReleaseValue(leaf);
        leaf._value = shared->Text();
        leaf._valueLength = shared->length;
        leaf._valueRoom = clsItem::kSharedValue;
        return;
    }

    const auto length = static_cast<std::uint32_t>(value.size());
    const std::uint32_t room = (length + 4) & ~3u;
    if (leaf.OwnRoom() <= length || leaf.OwnRoom() / 4 > room)
    {
        auto* block = static_cast<wchar_t*>(_arena.Allocate(room * sizeof(wchar_t)));
        CopyCharacters(block, value);
        ReleaseValue(leaf);
        leaf._value = block;
        leaf._valueRoom = room;
    }
    else
    {
        MoveCharacters(const_cast<wchar_t*>(leaf._value), value.data(), length);
    }
    const_cast<wchar_t*>(leaf._value)[length] = 0;
    leaf._valueLength = length;
}

void clsProfJob::CopyItems(clsItemList& target, const clsItemList& source)
{
    struct Level
    {
        WCValConstSListIter<clsItem*> next;
        clsItemList* target;
    };
    // Build the copy outside the tree and insert it when it is complete.
    clsItemList copy(*this, nullptr, target.Name());
    std::vector<Level> levels{{source.begin(), &copy}};
    try
    {
        while (!levels.empty())
        {
            Level& level = levels.back();
            if (!level.next)
            {
                levels.pop_back();
                continue;
            }
            const clsItem& item = **level.next++;
            clsItemList& parent = level.target == &copy ? target : *level.target;
            clsItem& made = item.List() != nullptr ? NewList(parent, item.Name().View())
                                                   : NewLeaf(item.Name().View(), item.Value());
            level.target->AppendNode(&made._node);
            if (item.List() != nullptr)
                levels.push_back({item.List()->begin(), made.List()});
        }
    }
    catch (...)
    {
        copy.RemoveAll();
        throw;
    }
    target.AppendAllOf(copy);
}

} // namespace qx
