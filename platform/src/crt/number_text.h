// Numbers in the form written by the formatter.
#pragma once

#include "bounded_text.h"
#include "conversion.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qxplatform
{

// The characters of a number in the order of output. A field is padded with blanks around them, or with zeros after the
// prefix.
struct NumberText
{
    std::string_view prefix; // sign and base
    std::size_t leadingZeros = 0;
    std::string_view digits;
    std::size_t trailingZeros = 0;
    std::string_view suffix; // exponent
};

void AppendNumber(BoundedText& target, const Conversion& conversion, const NumberText& number);

void AppendSigned(BoundedText& target, const Conversion& conversion, std::int64_t value);
void AppendUnsigned(BoundedText& target, const Conversion& conversion, std::uint64_t value);
void AppendPointer(BoundedText& target, const Conversion& conversion, const void* pointer);
void AppendFloat(BoundedText& target, const Conversion& conversion, double value);

// Returns the sign of a signed number according to the flags, or nothing.
std::string_view SignText(const Conversion& conversion, bool negative);

} // namespace qxplatform
