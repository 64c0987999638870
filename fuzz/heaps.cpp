// A sequence of operations on tracked heaps, with damage to headers and fences, compared with a model. Every four bytes
// of the input are an operation with its arguments.
#include "core/debug_line.h"
#include "heaps/module_list.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace qx;

namespace
{

void Require(bool condition)
{
    if (!condition)
    {
        abort();
    }
}

// Formats nothing, but makes the debug output active, so that reports are written.
class Sink : public DebugLineSink
{
    void Line(int, const wchar_t*, va_list) override {}
};

constexpr std::uint8_t kFill = 0x3D;

struct Object
{
    bool IsDebug() const { return header == kDebugHeaderSize; }
    std::size_t BlockSize() const { return before.size(); }
    std::uint8_t* Block() const { return static_cast<std::uint8_t*>(address) - header; }
    bool Differs(std::size_t from, std::size_t to) const
    {
        return std::memcmp(Block() + from, before.data() + from, to - from) != 0;
    }
    bool IsRefused() const
    {
        if (!IsDebug())
            return Differs(0, kPlainOverhead);
        return Differs(0, 4) || Differs(36, 44) || Differs(BlockSize() - sizeof kFence, BlockSize());
    }

    void* address = nullptr;
    clsHeapNode* heap = nullptr;
    std::size_t header = 0;
    std::vector<std::uint8_t> before; // the block as it was allocated
};

class Program
{
public:
    Program()
    {
        _job = _list.Open(L"job", 0, nullptr);
        for (const std::uint32_t flags : {kHeapDebug, std::uint32_t{0}, kHeapNoSerialize | kHeapDebug})
            _heaps.push_back(_list.CreateHeap(_job, L"heap", flags, nullptr));
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program()
    {
        for (const Object& object : _objects)
            if (object.address != nullptr && object.IsDebug())
                _lostChain |= object.Differs(0, 4) || object.Differs(8, 16) || object.Differs(24, 32);
        Require(_list.Close(_job) == kHeapsLeftOver);
        Require(_lostChain || _list.Chains().Count() == 0);
    }

    void Run(const std::uint8_t* step)
    {
        Object& object = _objects[step[1] % kObjects];
        clsHeapNode* const heap = _heaps[step[1] / kObjects % _heaps.size()];
        const unsigned argument = step[2] | unsigned{step[3]} << 8;
        switch (step[0] % 10)
        {
        case 0:
        case 1:
            return object.address == nullptr ? Allocate(object, heap, argument) : Free(object);
        case 2:
        case 3:
            return Damage(object, argument, step[0]);
        case 4:
            return FreeOnOtherHeap(object, heap);
        case 5:
            if (object.address != nullptr && argument % object.BlockSize() != 0)
                ExpectRefused(object.heap, object.Block() + object.header + argument % object.BlockSize());
            return;
        case 6:
            if (object.address == nullptr || !object.IsRefused())
                Require(_list.ValidateHeap(heap, nullptr) == 0);
            if (object.address != nullptr && !object.Differs(object.header - 4, object.header))
                Require(_list.ValidateHeap(object.heap, object.address) == 0);
            return;
        case 7:
            if (_freed != nullptr && !IsLive(_freed))
                ExpectRefused(_freedOn, _freed);
            return;
        case 8:
            return Leaks(heap);
        default:
            _list.ShrinkHeap(heap);
        }
    }

private:
    static constexpr std::size_t kObjects = 24;

    void Allocate(Object& object, clsHeapNode* heap, unsigned argument)
    {
        constexpr std::uint32_t kKinds[] = {0, kObjectDebug, kObjectPlain, kObjectDebug | kObjectNoChain};
        const std::uint32_t kind = kKinds[argument & 3];
        const std::uint32_t size = argument < 0xF000 ? (argument >> 2) % 700 : argument * 16;
        object.address = _list.AllocObject(heap, size, kind, 0x11223344, __builtin_return_address(0));
        Require(object.address != nullptr);
        std::memset(object.address, kFill, size);
        const bool isDebug = (kind & kObjectDebug) != 0 || (heap->IsDebugHeap() && kind != kObjectPlain);
        object.heap = heap;
        object.header = isDebug ? kDebugHeaderSize : kPlainOverhead;
        const std::size_t blockSize = size + (isDebug ? kDebugOverhead : kPlainOverhead);
        object.before.assign(object.Block(), object.Block() + blockSize);
        Require(_list.SizeObject(heap, object.address) == static_cast<std::int32_t>(size));
    }

    void Free(Object& object)
    {
        if (object.IsRefused())
        {
            Require(_list.FreeObject(object.heap, object.address) == kHeapsBadObject);
            Repair(object);
        }
        _lostChain |= object.IsDebug() && object.Differs(24, 32);
        Require(_list.FreeObject(object.heap, object.address) == 0);
        _freed = object.address;
        _freedOn = object.heap;
        object = Object();
    }

    // Changes a byte of the header or of the fence.
    void Damage(Object& object, unsigned argument, std::uint8_t change)
    {
        if (object.address == nullptr)
            return;
        const std::size_t around = object.header + (object.IsDebug() ? sizeof kFence : 0);
        std::size_t offset = argument % around;
        if (offset >= object.header)
            offset = object.BlockSize() - around + offset;
        object.Block()[offset] ^= change;
    }

    void Repair(const Object& object) { std::memcpy(object.Block(), object.before.data(), object.BlockSize()); }

    void FreeOnOtherHeap(const Object& object, clsHeapNode* heap)
    {
        if (object.address == nullptr || object.heap == heap)
            return;
        const std::vector<std::uint8_t> block(object.Block(), object.Block() + object.BlockSize());
        ExpectRefused(heap, object.address);
        Require(std::memcmp(block.data(), object.Block(), block.size()) == 0);
    }

    void ExpectRefused(clsHeapNode* heap, void* address)
    {
        if (IsLive(address))
            for (const Object& object : _objects)
                if (object.address == address && object.heap == heap)
                    return;
        Require(_list.FreeObject(heap, address) == kHeapsBadObject);
        Require(_list.SizeObject(heap, address) == kHeapsBadObject);
    }

    bool IsLive(const void* address) const
    {
        for (const Object& object : _objects)
            if (object.address == address)
                return true;
        return false;
    }

    void Leaks(const clsHeapNode* heap)
    {
        std::size_t count = 0, blocks = 0;
        for (const Object& object : _objects)
            if (object.address != nullptr && object.heap == heap)
            {
                ++count;
                blocks += object.BlockSize();
            }
        std::vector<LeakGroup> groups;
        Require(_list.GroupLeaks(nullptr, heap, groups) == 0);
        for (const LeakGroup& group : groups)
            count -= group.count;
        Require(count == 0);
        Require(_list.SizeOfObjects(const_cast<clsHeapNode*>(heap)) == static_cast<std::int32_t>(blocks));
    }

    clsModuleList _list;
    clsModuleNode* _job = nullptr;
    std::vector<clsHeapNode*> _heaps;
    Object _objects[kObjects];
    void* _freed = nullptr;
    clsHeapNode* _freedOn = nullptr;
    bool _lostChain = false; // a damaged header has lost its reference to a chain
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Sink sink;
    SetDebugLineSink(&sink);
    Program program;
    for (; size >= 4; data += 4, size -= 4)
        program.Run(data);
    return 0;
}
