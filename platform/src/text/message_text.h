// A message's text with its escapes and inserts put in.
#pragma once

#include <minwindef.h>

#include <string>
#include <string_view>

#include "text/message_arguments.h"

namespace qxplatform
{

struct MessageLayout
{
    static constexpr unsigned AS_WRITTEN = 0;  // line breaks as in the text
    static constexpr unsigned ONE_LINE = 0xff; // only those of %n

    bool withInserts = true;
    unsigned width = AS_WRITTEN; // any other: lines of at most so many characters, broken at blanks
};

// The text, or the system's error code.
DWORD ExpandMessage(
    std::u16string_view text, const MessageLayout& layout, MessageArguments& arguments, std::u16string& expanded);

} // namespace qxplatform
