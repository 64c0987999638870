#include "heaps/heap_node.h"

#include "diag/report.h"
#include "heaps/heap_functions.h"
#include "heaps/memory_access.h"
#include "heaps/module_node.h"

#include <algorithm>
#include <new>

namespace qx
{
namespace
{

constexpr SIZE_T kInitialSize = 32768;
constexpr std::size_t kMostTraces = 10;

// The system aligns blocks to 16 bytes. A plain object is 4 bytes and a debug object 44 bytes after the start of its
// block, so alignment distinguishes them.
constexpr std::uintptr_t kBlockAlignment = 16;

bool IsAligned(const void* block)
{
    return reinterpret_cast<std::uintptr_t>(block) % kBlockAlignment == 0;
}

} // namespace

void CopyName(wchar_t (&target)[kNameCapacity], const wchar_t* name)
{
    std::size_t length = 0;
    for (; name != nullptr && name[length] != 0 && length + 1 < kNameCapacity; ++length)
        target[length] = name[length];
    target[length] = 0;
}

clsHeapNode::clsHeapNode(clsModuleNode& owner, const wchar_t* name, std::uint32_t flags, CallChains& chains)
    : _owner(&owner),
      _flags(flags),
      _chains(chains)
{
    CopyName(_name, name);
    _heapOptions = ((flags & kHeapNoSerialize) != 0 ? HEAP_NO_SERIALIZE : 0) |
                   ((flags & kHeapGenerateExceptions) != 0 ? HEAP_GENERATE_EXCEPTIONS : 0);
}

clsHeapNode* clsHeapNode::Create(
    clsModuleNode& owner, const wchar_t* name, std::uint32_t flags, CallChains& chains, const CallSite& caller)
{
    void* const memory = HeapAlloc(GetProcessHeap(), 0, sizeof(clsHeapNode));
    if (memory == nullptr)
        return nullptr;
    auto* const heap = new (memory) clsHeapNode(owner, name, flags, chains);
    // clsModuleList raises the exception itself, after the failure has been reported and the critical section left.
    const DWORD systemOptions = heap->_heapOptions & ~static_cast<DWORD>(HEAP_GENERATE_EXCEPTIONS);
    heap->_systemHeap = HeapCreate(systemOptions, kInitialSize, 0);
    if (heap->_systemHeap == nullptr)
    {
        HeapFree(GetProcessHeap(), 0, memory);
        return nullptr;
    }
    if (heap->IsDebugHeap())
        heap->_creationTrace = chains.Use(CallChains::Captured(caller));
    return heap;
}

const wchar_t* clsHeapNode::ModuleName() const
{
    return _owner->Name();
}

void* clsHeapNode::AllocDebugObject(std::uint32_t size, std::uint32_t flags, std::uint32_t tag, const CallSite& caller)
{
    char* const block = IsPossible(size) ? AllocBlock(size + kDebugOverhead, flags) : nullptr;
    if (block == nullptr)
        return nullptr;
    const scCallChain* const chain =
        (flags & kObjectNoChain) == 0 ? _chains.Use(CallChains::Captured(caller)) : nullptr;
    _chainsInUse += chain != nullptr;
    new (block) scDebugHeader{.firstMagic = kFirstMagic,
        .reserved = 0,
        .systemHeap = _systemHeap,
        .tick = GetTickCount(),
        .reserved2 = 0,
        .chain = chain,
        .tag = tag,
        .size = static_cast<std::int32_t>(size),
        .secondMagic = kSecondMagic};
    PutWord(block + kDebugHeaderSize + size, kFence);
    _liveBytes = static_cast<std::int32_t>(static_cast<std::uint32_t>(_liveBytes) + size);
    return block + kDebugHeaderSize;
}

bool clsHeapNode::ReportFailedAllocation(std::uint32_t size, std::uint32_t flags, const CallSite& caller) const
{
    const bool isDebug = MakesDebugObject(flags);
    if (isDebug && !IsPossible(size))
        ReportImpossibleSize(size, caller);
    else
        ReportLine(L"Error: clsHeapNode['%s'/'%s']::AllocObject%s(%d): Out of memory", ModuleName(), Name(),
            isDebug ? L"D" : L"ND", size);
    return IsPossible(size);
}

void clsHeapNode::ReportImpossibleSize(std::uint32_t size, const CallSite& caller) const
{
    if (!UtilIsDebugActive())
        return;
    const ReportBlock block(L"Error: clsHeapNode['%s'/'%s']::AllocObject%s(%d)", ModuleName(), Name(), L"D", size);
    const CallChains::Captured captured(caller);
    const std::size_t count = std::min(captured.Count(), kMostTraces);
    ReportLine(L"%d traces", static_cast<int>(count));
    for (std::size_t i = 0; i < count; ++i)
        ReportLine(L"  %#p", captured[i]);
}

// Returns true if a block of this heap begins at an address. Prefers HeapValidate, because on some systems HeapSize
// reads the memory before any pointer. Takes the system heap's lock, because a host may allocate from that heap at the
// same time.
bool clsHeapNode::IsBlock(const void* block) const
{
    if (block == nullptr || !IsAligned(block))
        return false;
    const HeapFunctions& functions = LateHeapFunctions();
    if (functions.validate != nullptr)
        return functions.validate(_systemHeap, Serialization(), block) != FALSE;
    return BlockSize(block) != kNoBlock;
}

std::size_t clsHeapNode::BlockSize(const void* block) const
{
    return HeapSize(_systemHeap, Serialization(), block);
}

// Checks that the pointer refers to a block of this heap before reading memory near it. Doesn't look up the size of a
// plain object's block, because callers seldom need it.
clsHeapNode::Object clsHeapNode::Inspect(const void* object) const
{
    const char* const word = BytesAt(object, -static_cast<std::ptrdiff_t>(sizeof kSecondMagic));
    if (IsBlock(word))
        return {WordAt(word), true, kNoBlock};
    const char* const header = BytesAt(object, -static_cast<std::ptrdiff_t>(kDebugHeaderSize));
    const std::size_t size = IsBlock(header) ? BlockSize(header) : kNoBlock;
    const bool canHaveHeader = size != kNoBlock && size >= kDebugOverhead;
    return {canHaveHeader ? WordAt(word) : ReadWordCarefully(word), false, canHaveHeader ? size : kNoBlock};
}

// Returns false while the debug output is active, because FreeObject then fills freed memory and reports errors.
bool clsHeapNode::FreeQuickly(void* object)
{
    const HeapFunctions* const functions = heapFunctions.load(std::memory_order_acquire);
    if (functions == nullptr || functions->freeMarked == nullptr || functions->sizeOfAny == nullptr ||
        UtilIsDebugActive())
        return false;
    char* const plain = BytesAt(object, -static_cast<std::ptrdiff_t>(kPlainOverhead));
    if (!IsAligned(plain))
        return FreeDebugObjectQuickly(static_cast<char*>(object), *functions);
    if (!functions->freeMarked(_systemHeap, Serialization(), plain, kPlainMagic))
        return false;
    --_liveObjects;
    return true;
}

bool clsHeapNode::FreeDebugObjectQuickly(char* object, const HeapFunctions& functions)
{
    char* const block = BytesAt(object, -static_cast<std::ptrdiff_t>(kDebugHeaderSize));
    const std::size_t blockSize =
        IsAligned(block) ? functions.sizeOfAny(_systemHeap, Serialization(), block) : kNoBlock;
    if (blockSize == kNoBlock || blockSize < kDebugOverhead)
        return false;
    __builtin_prefetch(block + blockSize - sizeof kFence); // loads the fence along with the header
    scDebugHeader header;
    std::memcpy(&header, block, sizeof header);
    if (header.secondMagic != kSecondMagic || header.firstMagic != kFirstMagic || header.size < 0 ||
        !HasFenceInBlock(object, header.size, blockSize) || !HeapFree(_systemHeap, Serialization(), block))
        return false;
    CountFreedDebugObject(header);
    return true;
}

void clsHeapNode::CountFreedDebugObject(const scDebugHeader& header)
{
    ReleaseChain(header.chain);
    --_liveObjects;
    _liveBytes =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(_liveBytes) - static_cast<std::uint32_t>(header.size));
}

std::int32_t clsHeapNode::FreeObject(void* object)
{
    if (FreeQuickly(object)) [[likely]]
        return 0;
    const Object found = Inspect(object);
    if (found.magic == kSecondMagic)
        return FreeDebugObject(static_cast<char*>(object), found.debugBlockSize);
    if (found.magic == kPlainMagic)
        return FreePlainObject(static_cast<char*>(object), found.isPlainBlock);
    if (UtilIsDebugActive())
    {
        const ReportBlock block(L"Error: clsHeapNode['%s'/'%s']::FreeObject(%#p)", ModuleName(), Name(), object);
        ReportLine(L"bad pointer, or memory underrun (magic=0x%08x)", found.magic);
    }
    return kHeapsBadObject;
}

std::int32_t clsHeapNode::FreeDebugObject(char* object, std::size_t blockSize)
{
    ReportBlock block;
    const auto open = [&]
    {
        block.Open(
            L"Error: clsHeapNode['%s'/'%s']::FreeObjectD(%#p)", ModuleName(), Name(), static_cast<void*>(object));
    };

    const DebugObject found = ReadDebugObject(object, blockSize);
    if (found.header.firstMagic != kFirstMagic)
    {
        open();
        ReportLine(L"Not allocated with UTIL or memory underrun (object not freed)");
        return kHeapsBadObject;
    }
    if (!Check(found))
    {
        open();
        ReportLine(L"Memory overrun, fence value has been changed (object not freed)");
        Dump(found);
        return kHeapsBadObject;
    }
    if (found.header.size < 0)
    {
        open();
        ReportLine(L"bad size %d", found.header.size);
        Dump(found);
    }
    char* const begin = BytesAt(object, -static_cast<std::ptrdiff_t>(kDebugHeaderSize));
    if (blockSize != kNoBlock)
    {
        if (UtilIsDebugActive())
            std::memset(object, kFreedByte, blockSize - kDebugOverhead);
        if (HeapFree(_systemHeap, Serialization(), begin))
        {
            CountFreedDebugObject(found.header);
            return 0;
        }
    }
    open();
    ReportLine(L"error freeing object");
    Dump(found);
    return kHeapsBadObject;
}

std::int32_t clsHeapNode::FreePlainObject(char* object, bool isBlock)
{
    ReportBlock block;
    const auto open = [&]
    {
        block.Open(
            L"Error: clsHeapNode['%s'/'%s']::FreeObjectND(%#p)", ModuleName(), Name(), static_cast<void*>(object));
    };

    char* const begin = BytesAt(object, -static_cast<std::ptrdiff_t>(kPlainOverhead));
    if (UtilIsDebugActive())
    {
        const std::size_t blockSize = isBlock ? BlockSize(begin) : kNoBlock;
        if (blockSize != kNoBlock && blockSize > 0)
            std::memset(begin, kFreedByte, blockSize);
        else
        {
            open();
            ReportLine(L"bad object size %d", static_cast<std::int32_t>(blockSize));
        }
    }
    if (isBlock && HeapFree(_systemHeap, Serialization(), begin))
    {
        --_liveObjects;
        return 0;
    }
    open();
    ReportLine(L"error freeing object");
    return kHeapsBadObject;
}

std::int32_t clsHeapNode::SizeObject(const void* object) const
{
    const Object found = Inspect(object);
    const bool isDebug = found.magic == kSecondMagic;
    const std::size_t overhead = isDebug ? kDebugOverhead : kPlainOverhead;
    std::size_t blockSize = found.debugBlockSize;
    if (found.isPlainBlock && !isDebug)
        blockSize = BlockSize(BytesAt(object, -static_cast<std::ptrdiff_t>(kPlainOverhead)));
    if ((!isDebug && found.magic != kPlainMagic) || blockSize == kNoBlock || blockSize < overhead)
    {
        const ReportBlock block(L"Error: clsHeapNode['%s'/'%s']::SizeObject(%#p)", ModuleName(), Name(), object);
        ReportLine(L"bad pointer, or memory underrun (magic=0x%08x)\n", found.magic);
        return kHeapsBadObject;
    }
    const std::size_t size = blockSize - overhead;
    if (size == 0 && IsDebugHeap())
    {
        const ReportBlock block(L"Warning: clsHeapNode['%s'/'%s']::SizeObject(%#p):", ModuleName(), Name(), object);
        ReportLine(L"Object has a size of 0 (bad pointer?)\n");
    }
    return static_cast<std::int32_t>(size);
}

std::int32_t clsHeapNode::ShrinkHeap()
{
    const HeapFunctions& functions = LateHeapFunctions();
    if (functions.compact == nullptr)
    {
        ReportLine(L"Error: UtilHeapShrink(...) does only run under NT");
        return kHeapsNotSupported;
    }
    SetLastError(NO_ERROR);
    if (functions.compact(_systemHeap, Serialization()) != 0 || GetLastError() == NO_ERROR)
        return 0;
    ReportLine(
        L"Error: clsHeapNode['%s'/'%s']::ShrinkHeap(%#p) failed", ModuleName(), Name(), static_cast<void*>(this));
    return kHeapsInvalidHandle;
}

} // namespace qx
