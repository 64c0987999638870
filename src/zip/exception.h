// What ends an extraction.
#pragma once

#include "core/text/string.h"

#include <exception>
#include <string>

namespace qx
{

// Leaves the library, so it is one of the standard's kind; its text is UTF-8.
class clsZIPException : public std::exception
{
public:
    // A format with one %s, for a name.
    explicit clsZIPException(const wchar_t* format, const String& name = String());
    explicit clsZIPException(const String& text);

    const char* what() const noexcept override { return _text.c_str(); }

private:
    std::string _text;
};

} // namespace qx
