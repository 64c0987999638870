#include "diag/marker_series.h"

#include "core/debug_line.h"
#include "core/forever.h"
#include "module/module_paths.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qx
{
namespace
{

// The root series of the process and its users.
struct MarkerRoot
{
    clsCriticalSection lock;
    std::unique_ptr<clsConcurrencyVisualizerMarkerSeries> series;
    unsigned users = 0;
};

MarkerRoot& TheMarkerRoot()
{
    static MarkerRoot& root = MakeForever<MarkerRoot>();
    return root;
}

} // namespace

void* clsConcurrencyVisualizerMarkerSeries::operator new(std::size_t size) noexcept
{
    return GlobalAlloc(GMEM_FIXED | GMEM_ZEROINIT, size);
}

void clsConcurrencyVisualizerMarkerSeries::operator delete(void* memory) noexcept
{
    GlobalFree(memory);
}

clsConcurrencyVisualizerMarkerSeries::clsConcurrencyVisualizerMarkerSeries(const String& name)
    : _provider(new clsConcurrencyVisualizerProvider),
      _name(name)
{
    if (_provider->IsActive())
        MakeRecord();
}

clsConcurrencyVisualizerMarkerSeries::clsConcurrencyVisualizerMarkerSeries(
    const clsConcurrencyVisualizerMarkerSeries& parent, int depth)
    : _provider(parent._provider),
      _name(String::kFormatted, L"%s/%d", parent._name.Text(), depth)
{
    MakeRecord();
}

clsConcurrencyVisualizerMarkerSeries::~clsConcurrencyVisualizerMarkerSeries() = default;

void clsConcurrencyVisualizerMarkerSeries::MakeRecord()
{
    if (_name.Length() > kLongestSeriesName)
    {
        DebugLine(L"ERROR creating Marker Series '%s'", _name.Text());
        return;
    }
    scMarkerSeries& record = _record.emplace();
    record.provider = _provider->Record();
    record.nameLength = _name.Length();
    std::copy_n(_name.Text(), record.nameLength, record.name);
}

std::unique_ptr<clsConcurrencyVisualizerMarkerSeries> clsConcurrencyVisualizerMarkerSeries::Make(
    const wchar_t* name, bool prefix) noexcept
try
{
    const String full =
        prefix ? String(String::kFormatted, L"%s::%s", LibraryPaths().baseName.Text(), name) : String(name);
    return std::unique_ptr<clsConcurrencyVisualizerMarkerSeries>(new clsConcurrencyVisualizerMarkerSeries(full));
}
catch (const std::bad_alloc&)
{
    return nullptr;
}

std::int32_t clsConcurrencyVisualizerMarkerSeries::WriteRecorded(
    unsigned importance, const wchar_t* format, ...) const noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const std::int32_t result = WriteMarkerMessage(*_record, importance, format, arguments);
    va_end(arguments);
    return result;
}

clsConcurrencyVisualizerMarkerSeriesList* clsConcurrencyVisualizerMarkerSeries::EnterInnerLevel(
    List* list, const clsConcurrencyVisualizerMarkerSeries*& carrier) noexcept
try
{
    if (!list)
        list = &MakeList(GetCurrentThreadId());
    carrier = this;
    if (list->depth > 0)
    {
        auto& child = list->children[static_cast<std::size_t>(list->depth) - 1];
        if (!child)
            child.reset(new clsConcurrencyVisualizerMarkerSeries(*this, list->depth));
        carrier = child.get();
    }
    if (!carrier)
        return nullptr;
    ++list->depth;
    return list;
}
catch (const std::bad_alloc&)
{
    return nullptr;
}

clsConcurrencyVisualizerMarkerSeriesList* clsConcurrencyVisualizerMarkerSeries::SearchList(DWORD thread) noexcept
{
    const clsCriticalSectionLock lock(_lock);
    const std::unique_ptr<List>* const found = _lists.Find(thread);
    if (!found)
        return nullptr;
    _recent.store(found->get(), std::memory_order_release);
    return found->get();
}

clsConcurrencyVisualizerMarkerSeriesList& clsConcurrencyVisualizerMarkerSeries::MakeList(DWORD thread)
{
    const clsCriticalSectionLock lock(_lock);
    auto list = std::make_unique<List>(thread);
    List& made = *list;
    _lists.Insert(thread, std::move(list));
    _recent.store(&made, std::memory_order_release);
    return made;
}

void clsConcurrencyVisualizerSpan::Begin(
    const clsConcurrencyVisualizerMarkerSeries& carrier, const wchar_t* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    if (EnterMarkerSpan(carrier.Record(), _span, format, arguments) != 0)
        _span.series = nullptr;
    va_end(arguments);
}

clsConcurrencyVisualizerUser::clsConcurrencyVisualizerUser()
{
    MarkerRoot& root = TheMarkerRoot();
    const clsCriticalSectionLock lock(root.lock);
    if (!root.series)
        root.series = clsConcurrencyVisualizerMarkerSeries::Make(LibraryPaths().baseName.Text(), false);
    ++root.users;
    _root = root.series.get();
}

clsConcurrencyVisualizerUser::~clsConcurrencyVisualizerUser()
{
    MarkerRoot& root = TheMarkerRoot();
    const clsCriticalSectionLock lock(root.lock);
    if (--root.users == 0)
        root.series.reset();
}

} // namespace qx
