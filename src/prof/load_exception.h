// The exception for a source that is not a well-formed profile.
#pragma once

#include "core/debug_line.h"
#include "core/text/string.h"

#include <cstdint>
#include <utility>

namespace qx
{

// Thrown by pointer by the parser; the load function that catches it deletes it. For XFDF sources the name path
// contains the names of the open fields, joined by dots.
class clsLoadException
{
public:
    clsLoadException(std::uint32_t line, String message, String namePath = String())
        : _line(line),
          _message(std::move(message)),
          _namePath(std::move(namePath))
    {
        DebugLine(L"PROF load error line %d: '%s'", _line, _message.Text());
    }

    std::uint32_t Line() const { return _line; }
    const String& Message() const { return _message; }
    const String& NamePath() const { return _namePath; }

private:
    std::uint32_t _line;
    String _message;
    String _namePath;
};

} // namespace qx
