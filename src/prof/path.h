// Access to lists and leaves by slash-separated paths.
#pragma once

#include "prof/item.h"

#include <cstddef>
#include <string_view>

namespace qx
{

// Iterates over the components of a path. Null counts as an empty path. Every path has at least one component; an empty
// path has one empty component. A component followed by a slash is truncated to 255 characters.
class clsProfPath
{
public:
    explicit clsProfPath(const wchar_t* path) { Begin(path != nullptr ? path : L""); }

    // Skips a leading slash. Returns true if there was one.
    bool SkipLeadingSlash();

    // Component returns the current component. IsLast returns true if no component follows.
    std::wstring_view Component() const;
    bool IsLast() const { return *_end == 0; }
    // Moves to the next component. Must not be called on the last one.
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
    const wchar_t* _end; // the slash or the terminator
};

// Common rules: a leading slash starts at the root of the list's job. Each component before the last selects the first
// list with its name; there is no backtracking to later lists of the same name.

// Returns the first list of the path. Null selects the start list. ".." as the last component selects the enclosing
// list.
clsItemList* FindListByPath(clsItemList& start, const wchar_t* path);

// Returns the first leaf of the path, or null.
clsItem* FindLeafByPath(clsItemList& start, const wchar_t* path);

// Returns the list of the path, creating missing lists. If the last list exists already, it is emptied.
clsItemList& CreateListByPath(clsItemList& start, const wchar_t* path);

// Creates a new list for each component, even if lists of these names exist.
clsItemList& AppendListByPath(clsItemList& start, const wchar_t* path);

// Sets the value of a leaf, creating missing lists and the leaf itself.
void SetLeafByPath(clsItemList& start, const wchar_t* path, std::wstring_view value);

// The same, but always appends a new leaf.
void AppendLeafByPath(clsItemList& start, const wchar_t* path, std::wstring_view value);

// Removes all items of the given kind whose name is the last component, in every list that matches the preceding
// components. A leading slash doesn't select the root here; it follows an empty component. An empty path removes all
// items of the start list, of both kinds.
void RemoveByPath(clsItemList& start, const wchar_t* path, ItemKind kind);

// Removes a list's entry. Searches the whole tree for the list first, so that a pointer to a list that no longer exists
// is never dereferenced.
void RemoveList(clsItemList& root, const clsItemList* list);

} // namespace qx
