// Captures of the calling thread's registers and return addresses.
#include "stack/capture.h"

#include "stack/known_modules.h"
#include "stack/rule_cache.h"
#include "stack/unwinder.h"

#include <algorithm>
#include <optional>

namespace qxplatform
{
namespace
{

constinit RuleCache ruleCache;

// The modules to which the return addresses of a capture belong, as found so far.
class MetModules
{
public:
    // Returns true if the rules of the module that contains an address are in the cache.
    bool Contains(std::uintptr_t address)
    {
        if (_last.Contains(address)) [[likely]]
            return true;
        if (FindPermanentModule(address, _last))
            return true;
        for (unsigned index = 0; index < _count; ++index)
            if (_modules[index].Contains(address))
            {
                _last = _modules[index];
                return true;
            }
        ModuleRange range;
        if (!FindKnownModule(address, ruleCache, range))
            return false;
        _last = range;
        if (_count < kMost)
            _modules[_count++] = range;
        return true;
    }

private:
    static constexpr unsigned kMost = 8;

    ModuleRange _last{};
    ModuleRange _modules[kMost];
    unsigned _count = 0;
};

// A walk of the calling thread's stack. As long as short rules are enough, only three registers are tracked.
class Capture
{
public:
    explicit Capture(const FrameRegisters& start)
        : _memory(StackMemory::OfThisThread(start.stackPointer)),
          _stackPointer(start.stackPointer),
          _framePointer(start.framePointer),
          _address(start.address)
    {
    }

    // Stores the current address and the addresses of the callers. Returns false if a rule needs other registers.
    bool Run(unsigned skip, unsigned count, void** addresses, unsigned& stored)
    {
        for (stored = 0;;)
        {
            if (skip > 0)
                --skip;
            else
            {
                addresses[stored] = reinterpret_cast<void*>(_address);
                if (++stored == count)
                    return true;
            }
            const Step step = Advance();
            if (step != Step::Done)
                return step == Step::End;
        }
    }

private:
    Step Advance()
    {
        ShortRule rule;
        const bool isKnown = !_isExact && _modules.Contains(_address - 1);
        if (!isKnown || !ruleCache.Find(_address, rule)) [[unlikely]]
            return Resolve(isKnown);
        return rule.kind == ShortRule::Kind::Other ? Resolve(false) : Apply(rule);
    }

    [[gnu::always_inline]] Step Apply(const ShortRule& rule)
    {
        std::uintptr_t frame = 0;
        std::uintptr_t framePointerAt = 0;
        const std::uintptr_t offset = 8 * std::uintptr_t{rule.frameOffset};
        switch (rule.kind)
        {
        case ShortRule::Kind::FromStackPointer:
            frame = _stackPointer + offset;
            framePointerAt = frame - 8 * std::uintptr_t{rule.savedOffset};
            break;
        case ShortRule::Kind::FromFramePointer:
            frame = _framePointer + offset;
            framePointerAt = frame - 8 * std::uintptr_t{rule.savedOffset};
            break;
        case ShortRule::Kind::Outermost:
            return Step::End;
        default:
            framePointerAt = _framePointer;
            if (!_memory.Read(_framePointer - offset, frame))
                return Step::End;
        }
        std::uintptr_t framePointer = _framePointer;
        const bool isSaved = framePointerAt != frame;
        if (frame <= _stackPointer || !_memory.Read(frame - 8, _address) || _address == 0 ||
            (isSaved && !_memory.Read(framePointerAt, framePointer)))
            return Step::End;
        _framePointer = framePointer;
        _stackPointer = frame;
        return Step::Done;
    }

    // Finds the complete rule and applies it.
    [[gnu::noinline]] Step Resolve(bool isCacheable)
    {
        const std::uintptr_t address = _address - (_isExact ? 0 : 1);
        FrameRule rule;
        const bool isFound = FindTables(address) && _rules->Find(address, rule);
        if (isFound && isCacheable)
        {
            const ShortRule shortRule = ShortRuleOf(rule, _tables.table);
            ruleCache.Store(_address, shortRule);
            if (shortRule.kind != ShortRule::Kind::Other)
                return Apply(shortRule);
        }
        Registers registers;
        registers.known = 0;
        registers.Set(kStackPointer, _stackPointer);
        registers.Set(kFramePointer, _framePointer);
        registers.Set(kProgramCounter, _address);
        const Step step = isFound ? ApplyRule(rule, _tables.table, registers, _isExact, _memory)
                                  : StepOut(registers, _isExact, _memory);
        if (step != Step::Done)
            return step;
        if (!registers.Has(kFramePointer))
            return Step::UnknownRegister;
        _stackPointer = registers.value[kStackPointer];
        _framePointer = registers.value[kFramePointer];
        _address = registers.value[kProgramCounter];
        if (_isExact) // interrupted by a signal, whose handler may have had a stack of its own
            _memory = StackMemory::OfThisThread(_stackPointer);
        return Step::Done;
    }

    // Finds the tables of the module that contains the address, usually the module of the previous frame.
    bool FindTables(std::uintptr_t address)
    {
        if (address - _tables.begin < _tables.end - _tables.begin)
            return true;
        if (!FindModuleTables(address, _tables))
            return false;
        _rules.emplace(_tables.table);
        return true;
    }

    StackMemory _memory;
    MetModules _modules;
    ModuleTables _tables;
    std::optional<RuleFinder> _rules; // of these tables
    std::uintptr_t _stackPointer;
    std::uintptr_t _framePointer;
    std::uintptr_t _address;
    bool _isExact = false;
};

// Walks with all registers, for a stack with a frame that needs them. Frames below `first` are not stored.
unsigned CaptureWithAllRegisters(std::uintptr_t first, unsigned skip, unsigned count, void** addresses)
{
    CONTEXT context;
    RtlCaptureContext(&context);
    Registers registers = RegistersOf(context);
    StackMemory memory = StackMemory::OfThisThread(registers.value[kStackPointer]);
    bool isExact = true;
    unsigned stored = 0;
    while (stored < count)
    {
        const bool hasArrived = registers.value[kStackPointer] >= first || first == 0;
        if (hasArrived)
            first = 0; // the stack of an interrupted frame may be anywhere
        if (hasArrived && skip > 0)
            --skip;
        else if (hasArrived)
            addresses[stored++] = reinterpret_cast<void*>(registers.value[kProgramCounter]);
        if (StepOut(registers, isExact, memory) != Step::Done)
            break;
        if (isExact)
            memory = StackMemory::OfThisThread(registers.value[kStackPointer]);
    }
    return stored;
}

} // namespace

unsigned CaptureAddresses(const FrameRegisters& start, unsigned skip, unsigned count, void** addresses)
{
    if (count == 0)
        return 0;
    if constexpr (kHasShortRules)
    {
        unsigned stored = 0;
        if (Capture(start).Run(skip, count, addresses, stored))
            return stored;
    }
    return CaptureWithAllRegisters(start.stackPointer, skip, count, addresses);
}

} // namespace qxplatform

using namespace qxplatform;

namespace
{

constexpr DWORD kMostFrames = 0xFFFF;

} // namespace

WORD WINAPI QxCaptureFrom(const FrameRegisters* start, DWORD count, PVOID* addresses)
{
    return static_cast<WORD>(CaptureAddresses(*start, 0, std::min(count, kMostFrames), addresses));
}

// The function has a frame pointer, because it reads its frame's address.
WORD NTAPI RtlCaptureStackBackTrace(DWORD FramesToSkip, DWORD FramesToCapture, PVOID* BackTrace, DWORD* BackTraceHash)
{
    const auto* const frame = static_cast<const std::uintptr_t*>(__builtin_frame_address(0));
    const FrameRegisters start{reinterpret_cast<std::uintptr_t>(frame + 2), frame[0], frame[1]};
    const unsigned count = CaptureAddresses(start, FramesToSkip, std::min(FramesToCapture, kMostFrames), BackTrace);
    if (BackTraceHash != nullptr)
    {
        *BackTraceHash = 0;
        for (unsigned index = 0; index < count; ++index)
            *BackTraceHash += static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(BackTrace[index]));
    }
    return static_cast<WORD>(count);
}
