// Expands escapes and inserts in a message.
#pragma once

#include <minwindef.h>

#include <string>
#include <string_view>

#include "text/message_arguments.h"

namespace qxplatform
{

// Without `withInserts`, inserts are kept unchanged. Returns a system error code.
DWORD ExpandMessage(std::u16string_view text, bool withInserts, MessageArguments& arguments, std::u16string& expanded);

} // namespace qxplatform
