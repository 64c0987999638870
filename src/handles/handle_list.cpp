#include "handles/handle_list.h"

#include "core/debug_line.h"
#include "core/developer_run.h"

#include <windows.h>

#include <algorithm>
#include <new>
#include <vector>

namespace qx
{
namespace
{

const void* Shown(HandleValue handle)
{
    return reinterpret_cast<const void*>(handle);
}

// Returns no lines if memory runs out. The caller then shows plain addresses, so that no handle is missing from the
// report.
std::vector<String> LinesOf(const scFrames& frames, CallerTexts& texts)
{
    try
    {
        return texts.Lines(frames.callers, frames.count);
    }
    catch (const std::bad_alloc&)
    {
        return {};
    }
}

// Writes the callers only in developers' runs: other users don't have the symbols that make the addresses readable.
void WriteCallers(const scFrames& frames, CallerTexts& texts)
{
    if (!UtilIsDeveloperRun() || !UtilIsDebugActive())
        return;
    const std::vector<String> lines = LinesOf(frames, texts);
    for (unsigned i = 0; i < frames.count; ++i)
        if (i < lines.size() && !lines[i].IsEmpty())
            DebugLine(L"  %s", lines[i].Text());
        else
            DebugLine(L"  %#p", frames.callers[i].address);
}

} // namespace

clsUTHandleList::~clsUTHandleList()
{
    CallerTexts texts;
    ReportLost(false, texts);
}

void clsUTHandleList::Add(HandleValue handle)
{
    {
        const clsCriticalSectionLock lock(_lookUpLock);
        if (std::unique_ptr<scFrames>* const known = _handles.Find(handle))
        {
            ++(*known)->references;
            return;
        }
    }
    auto frames = std::make_unique<scFrames>();
    frames->count = CaptureCallers(frames->callers, scFrames::kCount);
    _handles.Insert(handle, std::move(frames));
}

void clsUTHandleList::Remove(HandleValue handle)
{
    const clsCriticalSectionLock lock(_lookUpLock);
    std::unique_ptr<scFrames>* const known = _handles.Find(handle);
    if (known != nullptr && --(*known)->references == 0)
        _handles.Remove(handle);
}

bool clsUTHandleList::Contains(HandleValue handle)
{
    const clsCriticalSectionLock lock(_lookUpLock);
    return _handles.Find(handle) != nullptr;
}

std::unique_ptr<clsUTHandleList> clsUTHandleList::Snapshot() const
{
    auto copy = std::make_unique<clsUTHandleList>(_name.View());
    copy->_isReported = true; // a snapshot must not report its handles when it is destroyed
    for (const auto& [handle, frames] : _handles)
    {
        auto own = std::make_unique<scFrames>(*frames);
        own->references = 1;
        copy->_handles.Insert(handle, std::move(own));
    }
    return copy;
}

void clsUTHandleList::ReportLost(bool isForced, CallerTexts& texts)
{
    if (_isReported && !isForced)
        return;
    for (const auto& [handle, frames] : _handles)
    {
        DebugLine(L"LOST %s HANDLE %#p:", _name.Text(), Shown(handle));
        WriteCallers(*frames, texts);
    }
    _isReported = true;
}

void Diff(clsUTHandleList& a, clsUTHandleList& b, const wchar_t* word, bool withDetails, CallerTexts& texts)
{
    const clsCriticalSectionLock lock(a._lock);
    const auto isNew = [&](const auto& entry)
    {
        return !b.Contains(entry.key);
    };
    const auto count = std::count_if(a._handles.begin(), a._handles.end(), isNew);
    if (count == 0)
        return;
    DebugLineIndent(+1, L"%s %d %s HANDLES:", word, static_cast<int>(count), a._name.Text());
    if (withDetails)
        for (const auto& entry : a._handles)
            if (isNew(entry))
            {
                DebugLine(L"%s %s HANDLE %#p", word, a._name.Text(), Shown(entry.key));
                WriteCallers(*entry.value, texts);
            }
    DebugLineIndent(-1, nullptr);
}

} // namespace qx
