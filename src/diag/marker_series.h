// Series are lanes on a timeline, on which spans and messages are written. Nothing is written unless a session listens.
#pragma once

#include "containers/skip_list.h"
#include "containers/vector.h"
#include "core/critical_section.h"
#include "core/text/string.h"
#include "diag/marker_events.h"
#include "diag/marker_provider.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace qx
{

class clsConcurrencyVisualizerMarkerSeries;

// The open spans of one thread on a series. Only that thread uses depth and children.
struct clsConcurrencyVisualizerMarkerSeriesList
{
    explicit clsConcurrencyVisualizerMarkerSeriesList(DWORD thread) : threadId(thread) {}

    const DWORD threadId;
    int depth = 0;
    // The lanes of nested spans: the element for depth n has the index n - 1. They are kept for later spans.
    WCValVector<std::unique_ptr<clsConcurrencyVisualizerMarkerSeries>> children;
};

// One lane. Has no record if markers are off, if no session was listening when the series was created, or if its name
// is too long. A series without a record ignores all calls and never gets one.
class clsConcurrencyVisualizerMarkerSeries
{
public:
    // Registers a provider of its own.
    explicit clsConcurrencyVisualizerMarkerSeries(const String& name);
    // Makes the lane of the spans that are nested `depth` deep, which shares the parent's provider.
    clsConcurrencyVisualizerMarkerSeries(const clsConcurrencyVisualizerMarkerSeries& parent, int depth);
    clsConcurrencyVisualizerMarkerSeries(const clsConcurrencyVisualizerMarkerSeries&) = delete;
    clsConcurrencyVisualizerMarkerSeries& operator=(const clsConcurrencyVisualizerMarkerSeries&) = delete;
    virtual ~clsConcurrencyVisualizerMarkerSeries();

    // The system's global memory. If it is exhausted, a new-expression returns null.
    static void* operator new(std::size_t size) noexcept;
    static void operator delete(void* memory) noexcept;

    // Makes a series. With `prefix`, its name begins with the library's name and "::". Returns null without memory.
    static std::unique_ptr<clsConcurrencyVisualizerMarkerSeries> Make(const wchar_t* name, bool prefix) noexcept;

    const String& Name() const { return _name; }
    bool HasRecord() const { return _record.has_value(); }
    const scMarkerSeries& Record() const { return *_record; }
    bool IsListenedTo() const { return _record->provider->enabled.load(std::memory_order_acquire) != 0; }

    // Returns 0 or an error code.
    template <class... Arguments>
    std::int32_t WriteMessage(unsigned importance, const wchar_t* format, Arguments... arguments) const noexcept
    {
        return HasRecord() ? WriteRecorded(importance, format, arguments...) : 0;
    }

    // Opens a nesting level of the calling thread and sets `carrier` to the lane of its spans. Returns the list whose
    // depth the end of the level decrements, or null without memory; the level then stays closed. Requires a record.
    clsConcurrencyVisualizerMarkerSeriesList* EnterLevel(const clsConcurrencyVisualizerMarkerSeries*& carrier) noexcept
    {
        auto* const list = FindOwnList();
        if (!list || list->depth != 0)
            return EnterInnerLevel(list, carrier);
        list->depth = 1;
        carrier = this;
        return list;
    }

private:
    using List = clsConcurrencyVisualizerMarkerSeriesList;

    void MakeRecord();
    std::int32_t WriteRecorded(unsigned importance, const wchar_t* format, ...) const noexcept;
    List* EnterInnerLevel(List* list, const clsConcurrencyVisualizerMarkerSeries*& carrier) noexcept;

    // Usually only one thread uses a series; it finds its list without a lock.
    List* FindOwnList() noexcept
    {
        const DWORD thread = GetCurrentThreadId();
        List* const recent = _recent.load(std::memory_order_acquire);
        return recent && recent->threadId == thread ? recent : SearchList(thread);
    }
    List* SearchList(DWORD thread) noexcept;
    List& MakeList(DWORD thread);

    clsAutoRelease<clsConcurrencyVisualizerProvider*> _provider;
    String _name;
    std::optional<scMarkerSeries> _record;
    clsCriticalSection _lock; // protects the dictionary
    WCValSkipListDict<DWORD, std::unique_ptr<List>> _lists;
    std::atomic<List*> _recent = nullptr; // the list that was searched last; lists live as long as the series
};

// Marks the lifetime of this object as a span. It must be destroyed on the thread that created it and before the
// series. Spans that overlap on one thread are nested. Any failure leaves an empty span, which does nothing.
class clsConcurrencyVisualizerSpan
{
public:
    // `series` may be null.
    template <class... Arguments>
    clsConcurrencyVisualizerSpan(
        clsConcurrencyVisualizerMarkerSeries* series, const wchar_t* format, Arguments... arguments) noexcept
    {
        if (!series || !series->HasRecord())
            return;
        const clsConcurrencyVisualizerMarkerSeries* carrier = nullptr;
        _list = series->EnterLevel(carrier);
        if (_list && carrier->HasRecord() && carrier->IsListenedTo())
            Begin(*carrier, format, arguments...);
    }
    clsConcurrencyVisualizerSpan(const clsConcurrencyVisualizerSpan&) = delete;
    clsConcurrencyVisualizerSpan& operator=(const clsConcurrencyVisualizerSpan&) = delete;
    virtual ~clsConcurrencyVisualizerSpan()
    {
        if (!_list)
            return;
        if (_span.series)
            LeaveMarkerSpan(_span);
        --_list->depth;
    }

private:
    void Begin(const clsConcurrencyVisualizerMarkerSeries& carrier, const wchar_t* format, ...) noexcept;

    scMarkerSpan _span;
    clsConcurrencyVisualizerMarkerSeriesList* _list = nullptr; // of the thread and the series that opened the span
};

// Keeps the root series of the process alive. A thread gets a series of its own only if the root has a record, that is,
// if a session was listening when the first of these objects was made.
class clsConcurrencyVisualizerUser
{
public:
    clsConcurrencyVisualizerUser();
    clsConcurrencyVisualizerUser(const clsConcurrencyVisualizerUser&) = delete;
    clsConcurrencyVisualizerUser& operator=(const clsConcurrencyVisualizerUser&) = delete;

protected:
    ~clsConcurrencyVisualizerUser();

    bool AreMarkersActive() const { return _root && _root->HasRecord(); }

private:
    const clsConcurrencyVisualizerMarkerSeries* _root = nullptr;
};

} // namespace qx
