// A tracked heap. Unless noted otherwise, callers must hold the critical section of all tracked heaps
// (clsModuleList::Section).
#pragma once

#include "heaps/call_chains.h"
#include "heaps/object_layout.h"

#include <windows.h>

#include <heapapi.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qx
{

class clsModuleNode;
struct HeapFunctions;

// Results of the exported functions.
constexpr std::int32_t kHeapsInvalidHandle = -2;
constexpr std::int32_t kHeapsCorrupted = -3;
constexpr std::int32_t kHeapsLeftOver = -5;
constexpr std::int32_t kHeapsBadObject = -6;
constexpr std::int32_t kHeapsNotSupported = -7;

constexpr std::uint32_t kHeapNoSerialize = 0x10;
constexpr std::uint32_t kHeapGenerateExceptions = 0x20;
constexpr std::uint32_t kHeapNoDebug = 0x40;
constexpr std::uint32_t kHeapIllegal = 0x80;
constexpr std::uint32_t kHeapNoWarning = 0x100;
constexpr std::uint32_t kHeapDebug = 0x40000000;

constexpr std::uint32_t kObjectZero = 0x1;
constexpr std::uint32_t kObjectFill = 0x2;
constexpr std::uint32_t kObjectNoChain = 0x4;
constexpr std::uint32_t kObjectPlain = 0x40;
constexpr std::uint32_t kObjectDebug = 0x40000000;

constexpr std::size_t kNameCapacity = 33; // including the terminator; longer names are truncated

class clsHeapNode
{
public:
    // What can be read of a debug object.
    struct DebugObject
    {
        scDebugHeader header;
        char* object;
        std::size_t blockSize; // kNoBlock if the object isn't in a block of this heap
    };

    static constexpr std::size_t kNoBlock = static_cast<std::size_t>(-1);

    // Returns null if memory runs out. The record is allocated on the process heap.
    static clsHeapNode* Create(
        clsModuleNode& owner, const wchar_t* name, std::uint32_t flags, CallChains& chains, const CallSite& caller);
    // Reports what is left, then destroys the heap and its system heap. Returns kHeapsLeftOver if there were objects,
    // otherwise 0.
    static std::int32_t Delete(clsHeapNode* heap);
    // Frees the heap and its objects without a report. Doesn't release the call chains of the objects.
    static void Discard(clsHeapNode* heap);

    clsHeapNode(const clsHeapNode&) = delete;
    clsHeapNode& operator=(const clsHeapNode&) = delete;

    clsModuleNode& Owner() const { return *_owner; }
    const wchar_t* Name() const { return _name; }
    const wchar_t* ModuleName() const;
    std::uint32_t Flags() const { return _flags; }
    bool IsDebugHeap() const { return (_flags & kHeapDebug) != 0; }
    bool RaisesExceptions() const { return (_flags & kHeapGenerateExceptions) != 0; }
    HANDLE SystemHeap() const { return _systemHeap; }
    std::int32_t LiveBytes() const { return _liveBytes; }

    // AllocObject and FreeQuickly report nothing and call no foreign code, so the only thread of a process may call
    // them without the critical section.

    bool MakesDebugObject(std::uint32_t flags) const
    {
        return (flags & kObjectDebug) != 0 || (IsDebugHeap() && (flags & kObjectPlain) == 0);
    }
    // Returns null on failure.
    void* AllocObject(std::uint32_t size, std::uint32_t flags, std::uint32_t tag, const CallSite& caller)
    {
        void* const object =
            MakesDebugObject(flags) ? AllocDebugObject(size, flags, tag, caller) : AllocPlainObject(size, flags);
        if (object == nullptr) [[unlikely]]
            return nullptr;
        if ((flags & (kObjectZero | kObjectFill)) == kObjectFill)
            std::memset(object, kFreshByte, size);
        ++_liveObjects;
        _maximumLiveObjects = std::max(_maximumLiveObjects, _liveObjects);
        ++_totalAllocations;
        return object;
    }
    // Frees an object if there is nothing to report about it. Otherwise returns false and changes nothing.
    bool FreeQuickly(void* object);
    // Reports why an allocation failed. Returns true if memory ran out, false if the size is too large.
    bool ReportFailedAllocation(std::uint32_t size, std::uint32_t flags, const CallSite& caller) const;
    std::int32_t FreeObject(void* object);
    std::int32_t SizeObject(const void* object) const;

    std::int32_t Validate(const void* object);
    std::int32_t ShrinkHeap();
    // Returns the sum of the sizes of all used blocks, at most INT32_MAX, or kHeapsNotSupported if the system lacks
    // HeapWalk.
    std::int32_t SizeOfBlocks() const;

    // Writes the objects that are still on the heap to the debug output.
    void Report() const;

    // Call the visitor for each block or object until it returns false. Never call it if the system lacks HeapWalk.
    template <class Visitor>
    void ForEachBlock(Visitor visitor) const; // visitor(block, size) for each used block
    template <class Visitor>
    void ForEachDebugObject(Visitor visitor) const; // visitor(DebugObject)

private:
    friend class clsModuleNode; // links the heaps

    // What Inspect found out about a pointer.
    struct Object
    {
        std::uint32_t magic;        // the word before the object
        bool isPlainBlock;          // a block of this heap begins with this word
        std::size_t debugBlockSize; // size of the block that begins at a debug object's header, or kNoBlock
    };

    clsHeapNode(clsModuleNode& owner, const wchar_t* name, std::uint32_t flags, CallChains& chains);
    ~clsHeapNode() = default;

    Object Inspect(const void* object) const;
    // Returns HEAP_NO_SERIALIZE if the heap was created with it. Otherwise the system heap takes its own lock as well,
    // because each debug object contains its handle and a host may use it at the same time.
    DWORD Serialization() const { return _heapOptions & HEAP_NO_SERIALIZE; }
    bool IsBlock(const void* block) const;
    std::size_t BlockSize(const void* block) const; // of a block of this heap
    DebugObject ReadDebugObject(const void* object, std::size_t blockSize) const;

    // Object sizes must fit in 31 bits, because they are signed in all results and records.
    static bool IsPossible(std::uint32_t size) { return static_cast<std::int32_t>(size) >= 0; }
    char* AllocBlock(std::size_t size, std::uint32_t flags)
    {
        const DWORD options = Serialization() | ((flags & kObjectZero) != 0 ? HEAP_ZERO_MEMORY : 0);
        return static_cast<char*>(HeapAlloc(_systemHeap, options, size));
    }
    void* AllocDebugObject(std::uint32_t size, std::uint32_t flags, std::uint32_t tag, const CallSite& caller);
    void* AllocPlainObject(std::uint32_t size, std::uint32_t flags)
    {
        char* const block = IsPossible(size) ? AllocBlock(size + kPlainOverhead, flags) : nullptr;
        if (block == nullptr) [[unlikely]]
            return nullptr;
        PutWord(block, kPlainMagic);
        return block + kPlainOverhead;
    }
    void ReportImpossibleSize(std::uint32_t size, const CallSite& caller) const;
    bool FreeDebugObjectQuickly(char* object, const HeapFunctions& functions);
    void CountFreedDebugObject(const scDebugHeader& header);
    std::int32_t FreeDebugObject(char* object, std::size_t blockSize);
    std::int32_t FreePlainObject(char* object, bool isBlock);

    bool HasFence(const DebugObject& object) const;
    bool Check(const DebugObject& object) const;
    void Dump(const DebugObject& object) const;
    void CheckAll() const;
    void ReleaseChain(const scCallChain* chain);

    clsModuleNode* _owner;
    wchar_t _name[kNameCapacity] = {};
    std::uint32_t _flags;
    std::uint32_t _heapOptions = 0;
    const scCallChain* _creationTrace = nullptr;
    HANDLE _systemHeap = nullptr;
    std::int32_t _liveObjects = 0;
    std::int32_t _liveBytes = 0;
    std::int32_t _totalAllocations = 0;
    std::int32_t _maximumLiveObjects = 0;
    std::size_t _chainsInUse = 0; // number of live objects with a call chain
    clsHeapNode* _next = nullptr;
    clsHeapNode* _previous = nullptr;
    CallChains& _chains;
};

// Copies a name, truncating it if necessary. A null name becomes an empty name.
void CopyName(wchar_t (&target)[kNameCapacity], const wchar_t* name);

} // namespace qx
