// A list of documents: finds, refreshes and keeps their records.
#pragma once

#include "core/critical_section.h"
#include "core/text/keyed_hash.h"
#include "core/text/string.h"
#include "docinfo/document_record.h"
#include "docinfo/share_reader.h"
#include "files/auto_release.h"
#include "threads/thread_base.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace qx
{

struct PathHash
{
    std::size_t operator()(const IString& key) const noexcept { return hash.WithoutCase(key.View()); }

    KeyedHash hash = KeyedHash::Random();
};

// The records of a list by their keys, which are compared without regard to the case of A to Z. Any thread may use it.
// It is a hash table, because comparing 100,000 paths with the same beginning is expensive. The hash has a secret key,
// because file names may come from untrusted sources.
class DocumentCache
{
public:
    // Returns null if there is none.
    clsAutoRelease<clsDocu*> Find(const IString& key);
    // Returns true if the cache was empty before.
    bool Insert(const IString& key, const clsAutoRelease<clsDocu*>& record);
    void RemoveExpired(std::uint64_t now);

private:
    clsCriticalSection _section;
    std::unordered_map<IString, clsAutoRelease<clsDocu*>, PathHash> _records;
};

// With a cache, the list's own thread drops expired records once a second. The first record starts the thread. Any
// thread may use a list, but no other thread may use it while it is destroyed.
class clsDocuList : public clsThreadBase
{
public:
    static constexpr std::size_t kMostReaders = 20;

    // With 0 seconds there is no cache.
    explicit clsDocuList(std::uint32_t cacheSeconds);
    // Waits for the list's thread and for all readers that are still running.
    ~clsDocuList() override;

    // Returns the refreshed record of a document. `wait` is the time in seconds to wait for a document on a share.
    clsAutoRelease<clsDocu*> Get(const String& key, std::uint32_t wait);

    unsigned ThreadProc() override;

private:
    clsAutoRelease<clsDocu*> FindOrMake(const String& key, std::uint32_t wait);
    void Refresh(clsDocu& record);
    // Does the part of a refresh that reads from a share. If it throws, the record is marked as invalid.
    void RefreshFromShare(clsDocu& record, const IString& share, std::uint64_t readBefore);
    void ReadFromShare(clsDocu& record, const IString& share, std::uint64_t readBefore);
    void KeepReader(std::unique_ptr<clsDocuAsync> reader);
    void DropEndedReaders();

    const std::uint32_t _cacheSeconds;
    clsCriticalSection _section; // guards the list as a whole; entered before the cache's section
    DocumentCache _cache;
    std::vector<std::unique_ptr<clsDocuAsync>> _readers; // readers whose callers no longer wait
};

} // namespace qx
