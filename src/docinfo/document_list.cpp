#include "docinfo/document_list.h"

#include "accounts/path_forms.h"
#include "core/ticks.h"
#include "docinfo/document_read.h"
#include "docinfo/share_guard.h"
#include "docinfo/shortcut.h"
#include "files/paths.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qx
{
namespace
{

constexpr std::uint32_t kMillisecondsPerSecond = 1000;
constexpr DWORD kRound = 1000;      // ms between two checks by the list's thread
constexpr DWORD kWaitForRoom = 100; // ms

// Converts seconds to milliseconds. The largest result, used as a wait, means no limit.
std::uint32_t Milliseconds(std::uint32_t seconds)
{
    return seconds > UINT32_MAX / kMillisecondsPerSecond ? UINT32_MAX : seconds * kMillisecondsPerSecond;
}

// Reads the document, and forgets it on failure, because a partially read record must not count as valid.
void ReadOrForget(clsDocu& record, std::uint64_t readBefore)
{
    try
    {
        ReadDocument(record, readBefore, nullptr);
    }
    catch (...)
    {
        record.Forget();
        throw;
    }
}

// Returns the path of the file to read: a shortcut's target, or the document itself. Empty if there is no target.
String PathToRead(const String& path)
{
    return GetPathExtension(path) == L".lnk" ? TargetOfShortcut(path) : path;
}

// Replaces a path on a mapped drive by one that the system can open, and returns its share.
IString ResolveShare(String& path)
{
    EnsureLocalPath(path, path);
    String unc;
    return EnsureUNCPath(path, unc) ? ShareOfPath(unc) : IString();
}

} // namespace

clsAutoRelease<clsDocu*> DocumentCache::Find(const IString& key)
{
    const clsCriticalSectionLock lock(_section);
    const auto found = _records.find(key);
    return found != _records.end() ? found->second : clsAutoRelease<clsDocu*>();
}

bool DocumentCache::Insert(const IString& key, const clsAutoRelease<clsDocu*>& record)
{
    const clsCriticalSectionLock lock(_section);
    const bool wasEmpty = _records.empty();
    _records.try_emplace(key, record);
    return wasEmpty;
}

void DocumentCache::RemoveExpired(std::uint64_t now)
{
    const clsCriticalSectionLock lock(_section);
    std::erase_if(_records, [now](const auto& entry) { return !entry.second->IsValidAt(now); });
}

clsDocuList::clsDocuList(std::uint32_t cacheSeconds) : clsThreadBase(L"DocuList::Reload"), _cacheSeconds(cacheSeconds)
{
    _readers.reserve(kMostReaders); // storing a reader must not fail, or its caller would have to wait for it
}

clsDocuList::~clsDocuList()
{
    ThreadEnd(false, INFINITE, false);
}

clsAutoRelease<clsDocu*> clsDocuList::Get(const String& key, std::uint32_t wait)
{
    clsAutoRelease<clsDocu*> record = FindOrMake(key, wait);
    Refresh(*record);
    return record;
}

clsAutoRelease<clsDocu*> clsDocuList::FindOrMake(const String& key, std::uint32_t wait)
{
    const auto make = [&]
    {
        return clsDocu::Create(key, this, Milliseconds(_cacheSeconds), Milliseconds(wait));
    };
    if (_cacheSeconds == 0)
        return make();
    const clsCriticalSectionLock lock(_section);
    const IString cacheKey(key);
    clsAutoRelease<clsDocu*> record = _cache.Find(cacheKey);
    if (record)
        return record;
    record = make();
    if (_cache.Insert(cacheKey, record))
        ThreadStart(THREAD_PRIORITY_IDLE);
    return record;
}

// A local document is read while the record's critical section is held, so that a second caller waits and finds a valid
// record. A document on a share is read without holding it, because the read may take as long as the system waits for
// the server.
void clsDocuList::Refresh(clsDocu& record)
{
    if (!record.refreshable || record.IsValidAt(UtilGetTicks()))
        return;
    // Resolves the path before entering the critical section, because the system may access the network. A record's
    // path never changes.
    String path = PathToRead(record.path);
    const IString share = path.IsEmpty() ? IString() : ResolveShare(path);
    std::uint64_t readBefore = 0;
    {
        const clsCriticalSectionLock lock(record.Section());
        const std::uint64_t now = UtilGetTicks();
        if (record.IsValidAt(now))
            return;
        record.resolvedPath = path;
        if (path.IsEmpty())
        {
            record.Forget();
            return;
        }
        readBefore = record.readTick.exchange(now);
        if (share.IsEmpty())
        {
            ReadOrForget(record, readBefore);
            return;
        }
    }
    RefreshFromShare(record, share, readBefore);
}

void clsDocuList::RefreshFromShare(clsDocu& record, const IString& share, std::uint64_t readBefore)
{
    try
    {
        ReadFromShare(record, share, readBefore);
    }
    catch (...)
    {
        record.readTick = 0; // marks the record as invalid
        throw;
    }
}

void clsDocuList::ReadFromShare(clsDocu& record, const IString& share, std::uint64_t readBefore)
{
    if (IsShareUnreachable(share, false))
        return; // the record keeps its old contents
    std::unique_ptr<clsDocuAsync> reader;
    {
        const clsCriticalSectionLock lock(record.Section());
        reader = std::make_unique<clsDocuAsync>(record, readBefore);
    }
    if (IsShareUnreachable(share, true))
        return; // another caller has found the share unreachable in the meantime
    if (!reader->Run())
    {
        KeepReader(std::move(reader));
        return;
    }
    const clsCriticalSectionLock lock(record.Section());
    reader->GiveResults();
}

// Keeps a reader whose caller no longer waits for it. If the list of readers is full, waits until one has ended.
void clsDocuList::KeepReader(std::unique_ptr<clsDocuAsync> reader)
{
    clsCriticalSectionLock lock(_section);
    for (DropEndedReaders(); _readers.size() >= kMostReaders; DropEndedReaders())
    {
        _section.Leave();
        Sleep(kWaitForRoom);
        _section.Enter();
    }
    _readers.push_back(std::move(reader));
}

void clsDocuList::DropEndedReaders()
{
    std::erase_if(_readers, [](const auto& reader) { return reader->HasEnded(); });
}

unsigned clsDocuList::ThreadProc()
{
    int result = 0;
    while (WaitForEvents(kRound, result, 0) && result != kWaitFailed)
        try
        {
            const clsCriticalSectionLock lock(_section);
            _cache.RemoveExpired(UtilGetTicks());
            DropEndedReaders();
        }
        catch (const std::bad_alloc&)
        {
            // Memory may be available again in the next round.
        }
    return 0;
}

} // namespace qx
