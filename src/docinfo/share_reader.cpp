#include "docinfo/share_reader.h"

#include "docinfo/document_read.h"

#include <atomic>
#include <exception>

namespace qx
{
namespace
{

constexpr unsigned kStackSize = 256 * 1024; // enough for every document reader

std::atomic<DocumentReading> shareReading = ReadDocument;

} // namespace

void SetShareReading(DocumentReading reading)
{
    shareReading = reading != nullptr ? reading : ReadDocument;
}

clsDocuAsync::clsDocuAsync(clsDocu& record, std::uint64_t readBefore)
    : clsThreadBase(L"clsDocuAsync"),
      _timeout(record.timeout),
      _readBefore(readBefore),
      _record(&record),
      _copy(record.Copy())
{
}

clsDocuAsync::~clsDocuAsync()
{
    ThreadEnd(false, INFINITE, false);
}

bool clsDocuAsync::Run()
{
    if (ThreadStart(THREAD_PRIORITY_NORMAL))
        ThreadEnd(false, _timeout, false);
    return HasEnded();
}

void clsDocuAsync::GiveResults()
{
    const clsCriticalSectionLock lock(_section);
    _record->TakeValues(*_copy);
}

bool clsDocuAsync::HasEnded()
{
    return GetThreadState() != State::Running;
}

unsigned clsDocuAsync::ThreadProc()
{
    try
    {
        shareReading.load()(*_copy, _readBefore, &_section);
    }
    catch (const std::exception&) // usually bad_alloc; an exception that leaves the thread would end the process
    {
        const clsCriticalSectionLock lock(_section);
        _copy->Forget();
    }
    return 0;
}

unsigned clsDocuAsync::GetStackSize() const
{
    return kStackSize;
}

} // namespace qx
