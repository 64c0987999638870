// Patterns that match text written in a locale's date and time formats.
#pragma once

#include "core/text/string.h"

#include <cstddef>
#include <optional>

namespace qx
{

struct TimePattern
{
    String text;
    std::optional<std::size_t> marker; // number of the group of the AM/PM marker, counted from 1, if the format has one
};

// Returns the pattern for a format such as HH:mm:ss. Only doubled letters are replaced; single letters are kept, so the
// pattern for h:mm tt matches no time.
TimePattern PatternOfTimeFormat(const String& format);

// Returns the pattern for a format such as dd.MM.yyyy, with a group for each part, in the order of the format. The
// group of the day doesn't match 10 and 20.
String PatternOfDateFormat(const String& format);

} // namespace qx
