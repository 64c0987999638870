// The exception that ends an extraction.
#pragma once

#include "core/text/string.h"

#include <exception>
#include <string>

namespace qx
{

// Thrown to callers outside the library, so it derives from a standard exception. Its text is UTF-8.
class clsZIPException : public std::exception
{
public:
    // `format` contains one %s, for the name.
    explicit clsZIPException(const wchar_t* format, const String& name = String());
    explicit clsZIPException(const String& text);

    const char* what() const noexcept override { return _text.c_str(); }

private:
    std::string _text;
};

} // namespace qx
