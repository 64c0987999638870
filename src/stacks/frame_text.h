// Formats stack frames as text.
#pragma once

#include "stacks/debug_help_session.h"

#include <cstddef>
#include <cstdint>

namespace qx
{

// Receives formatted lines. The vtable order is part of the interface.
class clsDebugOutput
{
public:
    virtual ~clsDebugOutput() = default;
    virtual void Print(const wchar_t* format, ...) = 0;
};

// Writes to the debug output.
class clsDebugOutput_qvx_debug final : public clsDebugOutput
{
public:
    static clsDebugOutput_qvx_debug& Instance();
    void Print(const wchar_t* format, ...) override;
};

// Writes a frame: one line, and one for each parameter.
void PrintFrame(const DBGStackTraceItem& item, clsDebugOutput& output);

inline constexpr std::size_t kFrameTextSize = 400;

// Formats an address as one line, cut to 399 characters. `isExact` states that it isn't a return address.
void FormatFrame(std::uint64_t address, wchar_t (&buffer)[kFrameTextSize], unsigned detail, clsDBGHELP& session,
    bool isExact = false);

} // namespace qx
