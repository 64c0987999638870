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

constexpr std::size_t kNameCapacity = 33; // longer names are cut

class clsHeapNode
{
public:
    // A debug object's header and block, as far as they can be read.
    struct DebugObject
    {
        scDebugHeader header;
        char* object;
        std::size_t blockSize; // kNoBlock if it isn't a block of this heap
    };

    static constexpr std::size_t kNoBlock = static_cast<std::size_t>(-1);

    // Returns null if memory runs out. The record is allocated on the process heap.
    static clsHeapNode* Create(
        clsModuleNode& owner, const wchar_t* name, std::uint32_t flags, CallChains& chains, const CallSite& caller);
    // Destroys the system heap, too. Returns kHeapsLeftOver if there were objects, otherwise 0.
    static std::int32_t Delete(clsHeapNode* heap);
    // Frees the heap and its objects without a report. Doesn't count the uses of the objects' call chains.
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

    // The first two report nothing and call no foreign code, so the only thread of a process needs no section for them.

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
    // Frees an object about which there is nothing to report. Otherwise returns false and changes nothing.
    bool FreeQuickly(void* object);
    // Reports why there is no object. Returns true if the system heap had no memory.
    bool ReportFailedAllocation(std::uint32_t size, std::uint32_t flags, const CallSite& caller) const;
    std::int32_t FreeObject(void* object);
    std::int32_t SizeObject(const void* object) const;

    std::int32_t Validate(const void* object);
    std::int32_t ShrinkHeap();
    // The sum of the sizes of all used blocks, at most INT32_MAX, or kHeapsNotSupported without HeapWalk.
    std::int32_t SizeOfBlocks() const;

    // Writes what is left on the heap.
    void Report() const;

    // The visitors are called until they return false. Without HeapWalk, they aren't called.
    template <class Visitor>
    void ForEachBlock(Visitor visitor) const; // visitor(block, size) for each used block
    template <class Visitor>
    void ForEachDebugObject(Visitor visitor) const; // visitor(DebugObject)

private:
    friend class clsModuleNode; // links the heaps

    // What a pointer to an object refers to, by the blocks of this heap.
    struct Object
    {
        std::uint32_t magic;        // the word before the object
        bool isPlainBlock;          // a block begins with that word
        std::size_t debugBlockSize; // of the block that begins where a debug object's header would, or kNoBlock
    };

    clsHeapNode(clsModuleNode& owner, const wchar_t* name, std::uint32_t flags, CallChains& chains);
    ~clsHeapNode() = default;

    Object Inspect(const void* object) const;
    // HEAP_NO_SERIALIZE or 0. Debug objects show the system heap's handle, and a host may use it at the same time.
    DWORD Serialization() const { return _heapOptions & HEAP_NO_SERIALIZE; }
    bool IsBlock(const void* block) const;
    std::size_t BlockSize(const void* block) const; // of a block of this heap
    DebugObject ReadDebugObject(const void* object, std::size_t blockSize) const;

    // Sizes of objects are signed in all results and records.
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
    std::size_t _chainsInUse = 0; // of live objects
    clsHeapNode* _next = nullptr;
    clsHeapNode* _previous = nullptr;
    CallChains& _chains;
};

// Copies a name, cut to the capacity. A null name becomes an empty one.
void CopyName(wchar_t (&target)[kNameCapacity], const wchar_t* name);

} // namespace qx
