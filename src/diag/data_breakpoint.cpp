#include "diag/data_breakpoint.h"

#include "core/debug_line.h"
#include "core/debugger.h"
#include "core/text/string.h"

#include <windows.h>

namespace qx
{
namespace
{

constexpr int kSlots = 4;
constexpr unsigned kOnWrite = 1;
constexpr unsigned kOnAccess = 3;
constexpr unsigned kNoCode = 4;

// Returns the length field of the control register for a size.
unsigned LengthCode(std::uint32_t size)
{
    switch (size)
    {
    case 1:
        return 0;
    case 2:
        return 1;
    case 4:
        return 3;
    case 8:
        return 2;
    default:
        return kNoCode;
    }
}

void Fail(const wchar_t* what, DWORD error)
{
    DebugLine(L"%s: %s", what, String::SystemErrorText(error).Text());
    BreakIfDebugged();
}

#if defined(__x86_64__)

constexpr DWORD64 EnableBit(int slot)
{
    return DWORD64{1} << (2 * slot);
}

// Returns the bits of a slot in the control register: condition, length and enable bit.
constexpr DWORD64 ControlBits(int slot, DWORD64 condition, DWORD64 lengthCode)
{
    return EnableBit(slot) | (condition | lengthCode << 2) << (16 + 4 * slot);
}

// The calling thread's debug registers.
class DebugRegisters
{
public:
    DebugRegisters() { _context.ContextFlags = CONTEXT_DEBUG_REGISTERS; }

    bool Load() { return GetThreadContext(GetCurrentThread(), &_context) != FALSE; }
    bool Store() { return SetThreadContext(GetCurrentThread(), &_context) != FALSE; }

    // Returns kNoSlot if all are taken.
    DataBreakpoint FreeSlot() const
    {
        for (int slot = 0; slot < kSlots; ++slot)
            if ((_context.Dr7 & EnableBit(slot)) == 0)
                return slot;
        return kNoSlot;
    }

    void Set(int slot, std::uint64_t address, unsigned condition, unsigned lengthCode)
    {
        DWORD64* const addresses[kSlots] = {&_context.Dr0, &_context.Dr1, &_context.Dr2, &_context.Dr3};
        *addresses[slot] = address;
        _context.Dr7 &= ~ControlBits(slot, 3, 3);
        _context.Dr7 |= ControlBits(slot, condition, lengthCode);
    }

    void Clear(int slot) { _context.Dr7 &= ~EnableBit(slot); }

private:
    CONTEXT _context{};
};

#else

// Other processors have debug registers of another kind, which the library doesn't use.
class DebugRegisters
{
public:
    bool Load() const
    {
        SetLastError(ERROR_NOT_SUPPORTED);
        return false;
    }
    bool Store() const { return false; }
    DataBreakpoint FreeSlot() const { return kNoSlot; }
    void Set(int, std::uint64_t, unsigned, unsigned) const {}
    void Clear(int) const {}
};

#endif

} // namespace

DataBreakpoint SetDataBreakpoint(std::uint64_t address, std::uint32_t size, bool isWriteOnly)
{
    constexpr wchar_t kName[] = L"UtilSetDataBP";
    const unsigned lengthCode = LengthCode(size);
    if (lengthCode == kNoCode)
    {
        Fail(kName, ERROR_INVALID_PARAMETER);
        return kNoSlot;
    }
    DebugRegisters registers;
    if (!registers.Load())
    {
        Fail(kName, GetLastError());
        return kNoSlot;
    }
    const DataBreakpoint slot = registers.FreeSlot();
    if (slot == kNoSlot)
    {
        Fail(kName, ERROR_NO_SYSTEM_RESOURCES);
        return kNoSlot;
    }
    registers.Set(slot, address, isWriteOnly ? kOnWrite : kOnAccess, lengthCode);
    if (registers.Store())
        return slot;
    Fail(kName, GetLastError());
    return kNoSlot;
}

void RemoveDataBreakpoint(DataBreakpoint slot)
{
    if (slot < 0 || slot >= kSlots)
        return;
    DebugRegisters registers;
    const bool isLoaded = registers.Load();
    registers.Clear(slot);
    if (!isLoaded || !registers.Store())
        Fail(L"UtilRemoveDataBP", GetLastError());
}

} // namespace qx
