#include "handles/handle_lists.h"

#include "containers/stack.h"
#include "containers/vector.h"
#include "core/critical_section.h"
#include "core/forever.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>
#include <utility>

namespace qx
{
namespace
{

constexpr std::int32_t kLargestKind = 65'535;

// The names of the kinds in reports.
constexpr const wchar_t* kNames[] = {
    L"",
    L"PEN",
    L"BRUSH",
    L"DC",
    L"",
    L"PALETTE",
    L"FONT",
    L"BITMAP",
    L"RGN",
    L"MF",
    L"MEMDC",
    L"",
    L"",
    L"EMF",
    L"COLORSPACE",
};

// A kind of handles: its live list, and its snapshots.
struct HandleKind
{
    explicit HandleKind(std::wstring_view name) : live(name) {}

    clsUTHandleList live;
    WCStack<std::unique_ptr<clsUTHandleList>> snapshots;
};

// Elements are pointers, so that a list doesn't move while another thread uses it.
struct HandleKinds
{
    clsCriticalSection lock; // for the vector, not for its lists
    WCValVector<std::unique_ptr<HandleKind>> kinds;
};

std::atomic<HandleKinds*> existing = nullptr; // null until the first call

HandleKinds& TheKinds()
{
    static HandleKinds& kinds = []() -> HandleKinds&
    {
        HandleKinds& made = MakeForever<HandleKinds>();
        existing = &made;
        return made;
    }();
    return kinds;
}

HandleKind& KindOf(std::size_t kind)
{
    HandleKinds& kinds = TheKinds();
    const clsCriticalSectionLock lock(kinds.lock);
    if (kind >= kinds.kinds.Count())
        kinds.kinds.Resize(std::max(kind + 1, std::size(kNames)));
    std::unique_ptr<HandleKind>& found = kinds.kinds[kind];
    if (!found)
        found = std::make_unique<HandleKind>(kind < std::size(kNames) ? kNames[kind] : L"");
    return *found;
}

// Removes the two newest snapshots and reports the handles that are in only one of them: first the numbers, then the
// handles.
void Compare(HandleKind& kind)
{
    if (kind.snapshots.Count() < 2)
        return;
    const std::unique_ptr<clsUTHandleList> newest = *kind.snapshots.Pop();
    const std::unique_ptr<clsUTHandleList> older = *kind.snapshots.Pop();
    CallerTexts texts;
    for (const bool withDetails : {false, true})
    {
        Diff(*newest, *older, L"NEW", withDetails, texts);
        Diff(*older, *newest, L"DELETED", withDetails, texts);
    }
}

} // namespace

std::uint32_t ManageHandles(std::int32_t kind, HandleOperation operation, HandleValue handle)
{
    if (kind > kLargestKind)
        return 0;
    HandleKind& own = KindOf(static_cast<std::size_t>(std::max(kind, 0)));
    clsUTHandleList& live = own.live;
    const clsCriticalSectionLock lock(live.Guard());
    switch (operation)
    {
    case HandleOperation::Report:
    {
        CallerTexts texts;
        live.ReportLost(true, texts);
        return 0;
    }
    case HandleOperation::Add:
        live.Add(handle);
        return 0;
    case HandleOperation::Remove:
        live.Remove(handle);
        return 0;
    case HandleOperation::Count:
        return static_cast<std::uint32_t>(live.Count());
    case HandleOperation::Contains:
        return live.Contains(handle) ? 1 : 0;
    case HandleOperation::TakeSnapshot:
        own.snapshots.Push(live.Snapshot());
        return 0;
    case HandleOperation::Compare:
        Compare(own);
        return 0;
    }
    return 0;
}

void ReportLostHandles()
{
    // If the process ends, the system has terminated the other threads. One of them may have held the lock.
    HandleKinds* const kinds = existing;
    if (kinds == nullptr || !kinds->lock.TryEnter())
        return;
    CallerTexts texts;
    for (const std::unique_ptr<HandleKind>& kind : kinds->kinds)
        if (kind)
            kind->live.ReportLost(false, texts);
    kinds->lock.Leave();
}

} // namespace qx
