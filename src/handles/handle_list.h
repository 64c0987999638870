// The open handles of one kind.
#pragma once

#include "containers/skip_list.h"
#include "core/critical_section.h"
#include "core/text/string.h"
#include "stacks/address_texts.h"
#include "stacks/callers.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace qx
{

// The record of a handle.
struct scFrames
{
    static constexpr unsigned kCount = 20;

    std::int32_t references = 1;
    scCaller callers[kCount] = {}; // where the handle was created, innermost first
    unsigned count = 0;            // number of callers
};

// A handle's value. Reports are in the order of these values.
using HandleValue = std::uintptr_t;

// The handles of one kind: the live list, or a snapshot of it. All members but Guard require the lock.
class clsUTHandleList
{
public:
    explicit clsUTHandleList(std::wstring_view name) : _name(name) {}
    clsUTHandleList(const clsUTHandleList&) = delete;
    clsUTHandleList& operator=(const clsUTHandleList&) = delete;
    // A live list reports the handles that are left, unless they have been reported.
    ~clsUTHandleList();

    // Returns the lock of the list.
    clsCriticalSection& Guard() { return _lock; }

    // Counts a known handle once more, and stores the callers of a new one.
    void Add(HandleValue handle);
    // Removes the handle once it was removed as often as it was added. Unknown handles are ignored.
    void Remove(HandleValue handle);
    std::size_t Count() const { return _handles.Count(); }
    bool Contains(HandleValue handle);

    // Returns a deep copy in which each handle counts once.
    std::unique_ptr<clsUTHandleList> Snapshot() const;

    // Writes the handles and their callers to the debug output. Does nothing if a report was written before, except if
    // it is forced.
    void ReportLost(bool isForced, CallerTexts& texts);

private:
    friend void Diff(clsUTHandleList& a, clsUTHandleList& b, const wchar_t* word, bool withDetails, CallerTexts& texts);

    clsCriticalSection _lock;
    const String _name;
    WCValSkipListDict<HandleValue, std::unique_ptr<scFrames>> _handles;
    clsCriticalSection _lookUpLock; // around look-ups and removals by key
    bool _isReported = false;
};

// Writes the handles that are in `a` but not in `b`: their number, and with details each of them with its callers.
void Diff(clsUTHandleList& a, clsUTHandleList& b, const wchar_t* word, bool withDetails, CallerTexts& texts);

} // namespace qx
