// Exceptions by which the library's parsers report failures.
#pragma once

#include "containers/slist.h"
#include "core/text/string.h"

namespace qx
{

// A list of messages, newest first.
class clsErrorStack : public WCValSList<String>
{
public:
    void Push(const String& message) { InsertHead(message); }
};

// Thrown by pointer; the top of the operation catches and deletes it. Formats refer to their arguments as %1, %2, ...
// Each message is logged when it is added.
class clsException
{
public:
    // With a null format, the stack is empty.
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
