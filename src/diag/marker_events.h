// The events of markers, as they are passed to the system's event tracing.
#pragma once

#include "diag/marker_provider.h"

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace qx
{

inline constexpr std::size_t kLongestSeriesName = 32;

// A series (a lane on the timeline) as event writers use it. Never changes after its creation.
struct scMarkerSeries
{
    scMarkerProvider* provider = nullptr;
    wchar_t name[kLongestSeriesName + 1] = {};
    std::size_t nameLength = 0;
};

// A span that has begun.
struct scMarkerSpan
{
    const scMarkerSeries* series = nullptr;
    std::int32_t id = 0;
    std::uint8_t category = 0;
    std::uint8_t importance = 0;
};

// Each function returns 0 or an error code, and writes nothing if it fails. A text of more than 8,192 characters is an
// error. A text of up to 63 characters takes no heap memory. The first event of a provider is preceded by its manifest.

// Writes a message if the session wants messages of this importance. Returns 0 if it doesn't.
std::int32_t WriteMarkerMessage(
    const scMarkerSeries& series, unsigned importance, const wchar_t* format, va_list arguments);
// Writes the beginning of a span with a new id and fills in `span`.
std::int32_t EnterMarkerSpan(
    const scMarkerSeries& series, scMarkerSpan& span, const wchar_t* format, va_list arguments);
// Writes the end of a span if a session still listens.
std::int32_t LeaveMarkerSpan(const scMarkerSpan& span);

} // namespace qx
