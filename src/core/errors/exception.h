// How the library's parsers signal a failure.
#pragma once

#include "containers/slist.h"
#include "core/text/string.h"

namespace qx
{

// Messages, the newest first.
class clsErrorStack : public WCValSList<String>
{
public:
    void Push(const String& message) { InsertHead(message); }
};

// Thrown by pointer, caught and deleted at the top of the operation. Formats have %1, %2, ... in the place of their
// arguments; each message is logged as it comes.
class clsException
{
public:
    // A null format gives an empty stack.
    explicit clsException(const wchar_t* format, ...);
    clsException(const clsException& other) = default;
    clsException& operator=(const clsException&) = delete;

    void Push(const wchar_t* format, ...);

    const clsErrorStack& Errors() const { return _errors; }

private:
    void PushV(const wchar_t* format, va_list arguments);

    clsErrorStack _errors;
};

} // namespace qx
