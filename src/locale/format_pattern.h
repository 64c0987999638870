// Patterns that match what a locale's formats of dates and times write.
#pragma once

#include "core/text/string.h"

#include <cstddef>
#include <optional>

namespace qx
{

struct TimePattern
{
    String text;
    std::optional<std::size_t> marker; // the group of the half of the day, counted from 1, if the format asks for one
};

// Of a format such as HH:mm:ss. Only doubled letters count: a single one stays a letter, so that the pattern of h:mm tt
// matches no time.
TimePattern PatternOfTimeFormat(const String& format);

// Of a format such as dd.MM.yyyy: a group for each part, in their order. The day's takes no 10 and 20.
String PatternOfDateFormat(const String& format);

} // namespace qx
