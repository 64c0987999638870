// A message's text with its escapes and inserts put in.
#pragma once

#include <minwindef.h>

#include <string>
#include <string_view>

#include "text/message_arguments.h"

namespace qxplatform
{

// Without inserts their numbers stay as they are in the text. The result is the system's error code.
DWORD ExpandMessage(std::u16string_view text, bool withInserts, MessageArguments& arguments, std::u16string& expanded);

} // namespace qxplatform
