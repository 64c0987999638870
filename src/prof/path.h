// Lists and leaves by slash-separated paths.
#pragma once

#include "prof/item.h"

#include <cstddef>
#include <string_view>

namespace qx
{

// Takes a path apart from left to right. Null is the empty path, and every path has at least one component: that of the
// empty path is the empty name. A component with a slash behind it counts up to its first 255 characters.
class clsProfPath
{
public:
    explicit clsProfPath(const wchar_t* path) { Begin(path != nullptr ? path : L""); }

    // A leading slash is skipped, if there is one.
    bool SkipLeadingSlash();

    // The present component, and whether another one follows.
    std::wstring_view Component() const;
    bool IsLast() const { return *_end == 0; }
    // Goes on to the next component; only if this wasn't the last.
    void Next() { Begin(_end + 1); }

private:
    static constexpr std::size_t kLongestComponent = 255;

    void Begin(const wchar_t* component)
    {
        _begin = _end = component;
        while (*_end != 0 && *_end != L'/')
            ++_end;
    }

    const wchar_t* _begin;
    const wchar_t* _end; // at the slash or the terminator
};

// The rules below share the first steps: a leading slash begins at the root of the list's job, and components lead
// through the first list of each name, with no going back to a second one.

// The first list of the path. Null gives the start list, ".." as the rest of the path the list around the present one.
clsItemList* FindListByPath(clsItemList& start, const wchar_t* path);

// The first leaf of the path's last component.
clsItem* FindLeafByPath(clsItemList& start, const wchar_t* path);

// Enters existing lists and makes the missing ones. A last list that was there already is emptied.
clsItemList& CreateListByPath(clsItemList& start, const wchar_t* path);

// Makes a new list for each component, whatever is there already.
clsItemList& AppendListByPath(clsItemList& start, const wchar_t* path);

// The leaf gets the value; missing lists and a missing leaf are made.
void SetLeafByPath(clsItemList& start, const wchar_t* path, std::wstring_view value);

// The same, but always with a new leaf.
void AppendLeafByPath(clsItemList& start, const wchar_t* path, std::wstring_view value);

// Removes all items of the kind that have the last component's name, in every list that the components before it match.
// Here a leading slash is none: it stands behind an empty component. The empty path removes all items of the start
// list, of either kind.
void RemoveByPath(clsItemList& start, const wchar_t* path, ItemKind kind);

// Removes the entry of a list, which is sought in the whole tree first, so that a list that is gone isn't touched.
void RemoveList(clsItemList& root, const clsItemList* list);

} // namespace qx
