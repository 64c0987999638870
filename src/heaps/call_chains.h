// Stores the call chains of objects, heaps and jobs. Equal chains share one reference-counted record.
#pragma once

#include "stacks/callers.h"

#include <cstddef>
#include <cstdint>

namespace qx
{

// Called with true before each capture of a call chain and with false after it. The exception handlers are in a higher
// layer, so they register this function here.
using CaptureProtection = void (*)(bool begins);

// Sets the protection, which may be null, and returns the previous one.
CaptureProtection SetCaptureProtection(CaptureProtection protection);

// The part of a record that debuggers and other modules read. Unused entries are zero.
struct scCallChain
{
    static constexpr std::size_t kEntries = 30;

    scCaller entries[kEntries];
};

static_assert(sizeof(scCallChain) == 720);

// All records of the process, allocated on the process heap. The caller holds the critical section of the heaps
// (clsModuleList::Section).
class CallChains
{
public:
    // The nearest return addresses of the calling thread, without those inside the library.
    class Captured
    {
    public:
        // `caller` is the place from which the exported function was called.
        explicit Captured(const CallSite& caller);

        std::size_t Count() const { return _count; }
        void* operator[](std::size_t index) const { return _addresses[index]; }

    private:
        void* _addresses[scCallChain::kEntries];
        std::size_t _count;
    };

    constexpr CallChains() = default;
    CallChains(const CallChains&) = delete;
    CallChains& operator=(const CallChains&) = delete;
    ~CallChains(); // frees all records

    // Returns the record of a chain and increments its reference count. Returns null if memory runs out.
    const scCallChain* Use(const Captured& captured);

    // Decrements the reference count of a record and frees the record at 0. A pointer that isn't a record's is ignored,
    // because it may come from a damaged header.
    void Release(const scCallChain* chain);

    // Returns true if the pointer is a record's. Doesn't dereference it.
    bool IsRecord(const scCallChain* chain) const { return Find(chain) != nullptr; }

    std::size_t Count() const { return _count; }

private:
    struct Record
    {
        scCallChain chain;
        std::uint32_t users;
        std::uint32_t hash;
        Record* nextByContent;
        Record* nextByAddress;
    };

    static constexpr std::size_t kFirstBuckets = 64;

    static std::size_t HashOf(const void* address);
    static std::uint32_t HashOf(const Captured& captured);
    Record* Find(const scCallChain* chain) const;
    void Grow();
    void Insert(Record& record);
    void Remove(Record& record);

    Record* _firstByContent[kFirstBuckets] = {};
    Record* _firstByAddress[kFirstBuckets] = {};
    Record** _byContent = _firstByContent;
    Record** _byAddress = _firstByAddress;
    std::size_t _buckets = kFirstBuckets;
    std::size_t _count = 0;
};

} // namespace qx
