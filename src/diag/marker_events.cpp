#include "diag/marker_events.h"

#include "core/text/text_format.h"

#include <wchar.h>

#include <iterator>
#include <memory>
#include <new>

namespace qx
{
namespace
{

constexpr std::uint8_t kMessageCategory = 0;
constexpr std::uint8_t kSpanCategory = 1;
constexpr std::uint8_t kSpanImportance = 4;
constexpr std::size_t kLongestMarkerText = 8'192;
constexpr auto kTextTooLong = static_cast<std::int32_t>(0x8007007A); // ERROR_INSUFFICIENT_BUFFER

enum class MarkerEvent : std::uint8_t
{
    EnterSpan = 1,
    LeaveSpan = 2,
    WriteMessage = 4,
};

constexpr std::uint64_t KeywordOf(std::uint8_t category)
{
    return std::uint64_t{1} << 63 | std::uint64_t{1} << category % 48;
}

EVENT_DESCRIPTOR DescriptorOf(MarkerEvent event, std::uint8_t importance, std::uint8_t category)
{
    EVENT_DESCRIPTOR descriptor = {};
    descriptor.Id = static_cast<USHORT>(event);
    descriptor.Version = 1;
    descriptor.Channel = 0x10;
    descriptor.Level = importance;
    descriptor.Opcode = event == MarkerEvent::WriteMessage ? 0 : static_cast<UCHAR>(event);
    descriptor.Task = event == MarkerEvent::WriteMessage ? 3 : 1;
    descriptor.Keyword = KeywordOf(category);
    return descriptor;
}

// The pieces of an event's data.
class Pieces
{
public:
    void Add(const void* data, std::size_t size)
    {
        _pieces[_count++] = {reinterpret_cast<std::uintptr_t>(data), static_cast<ULONG>(size), 0};
    }
    // The terminator is part of a text.
    void AddText(const wchar_t* text, std::size_t length) { Add(text, (length + 1) * sizeof(wchar_t)); }

    std::int32_t Write(const scMarkerProvider& provider, const EVENT_DESCRIPTOR& descriptor)
    {
        auto& write = TracingLibrary().p_EventWrite;
        return MarkerError(write.IsThere() ? write(provider.registration, &descriptor, _count, _pieces) : 1);
    }

private:
    EVENT_DATA_DESCRIPTOR _pieces[7] = {};
    ULONG _count = 0;
};

// Sends the manifest once for each provider. A failure isn't reported: the event itself will probably fail as well.
void SendManifestFirst(scMarkerProvider& provider)
{
    std::uint32_t expected = 0;
    if (provider.isManifestSent.load(std::memory_order_acquire) != 0 ||
        !provider.isManifestSent.compare_exchange_strong(expected, 1))
        return;
    // Format 1, version 1.0, the magic byte, one chunk in total, chunk 0.
    static constexpr std::uint8_t kHead[] = {1, 1, 0, 0x5B, 1, 0, 0, 0};
    EVENT_DESCRIPTOR descriptor = {};
    descriptor.Id = 0xFFFE;
    descriptor.Version = 1;
    descriptor.Opcode = 0xFE;
    descriptor.Keyword = ~ULONGLONG{0};
    Pieces pieces;
    pieces.Add(kHead, sizeof(kHead));
    pieces.Add(provider.manifest.get(), provider.manifestLength);
    pieces.Write(provider, descriptor);
}

std::int32_t WriteMarker(MarkerEvent event, const scMarkerSpan& marker, const wchar_t* text, std::size_t length)
{
    const auto type = static_cast<std::uint8_t>(event);
    const std::uint8_t narrowText = 0;
    Pieces pieces;
    pieces.Add(&type, sizeof(type));
    pieces.Add(&marker.importance, sizeof(marker.importance));
    pieces.Add(&marker.category, sizeof(marker.category));
    if (event != MarkerEvent::WriteMessage)
        pieces.Add(&marker.id, sizeof(marker.id));
    pieces.AddText(marker.series->name, marker.series->nameLength);
    pieces.AddText(text, length);
    pieces.Add(&narrowText, sizeof(narrowText));
    return pieces.Write(*marker.series->provider, DescriptorOf(event, marker.importance, marker.category));
}

std::int32_t WriteFormatted(MarkerEvent event, const scMarkerSpan& marker, const wchar_t* format, va_list arguments)
{
    SendManifestFirst(*marker.series->provider);
    if (format[0] == L'%' && format[1] == L's' && format[2] == L'\0') // the usual form, which needs no formatting
    {
        const wchar_t* const text = va_arg(arguments, const wchar_t*);
        const std::size_t length = text ? wcsnlen(text, kLongestMarkerText + 1) : 0;
        return length <= kLongestMarkerText ? WriteMarker(event, marker, text ? text : L"", length) : kTextTooLong;
    }
    va_list again;
    va_copy(again, arguments);
    wchar_t shortText[64];
    const int shortLength = FormatBounded(shortText, std::size(shortText), format, arguments);
    std::int32_t result = 0;
    if (shortLength >= 0)
        result = WriteMarker(event, marker, shortText, static_cast<std::size_t>(shortLength));
    // A buffer for the longest text saves formatting the text a second time only to measure it.
    else if (const std::unique_ptr<wchar_t[]> buffer(new (std::nothrow) wchar_t[kLongestMarkerText + 1]); !buffer)
        result = E_OUTOFMEMORY;
    else if (const int length = FormatBounded(buffer.get(), kLongestMarkerText + 1, format, again); length < 0)
        result = kTextTooLong;
    else
        result = WriteMarker(event, marker, buffer.get(), static_cast<std::size_t>(length));
    va_end(again);
    return result;
}

// Ids go from 0x80000001 to 0x7FFFFFFF and then begin again.
std::int32_t NextSpanId(scMarkerProvider& provider)
{
    std::int32_t last = INT32_MAX;
    provider.lastSpanId.compare_exchange_strong(last, INT32_MIN);
    return provider.lastSpanId.fetch_add(1) + 1;
}

bool IsMessageWanted(const scMarkerProvider& provider, unsigned importance)
{
    constexpr std::uint64_t kKeyword = KeywordOf(kMessageCategory);
    const std::uint8_t level = provider.level.load(std::memory_order_relaxed);
    return provider.enabled.load(std::memory_order_acquire) != 0 && (level == 0 || importance <= level) &&
           (provider.anyKeywords.load(std::memory_order_relaxed) & kKeyword) != 0 &&
           (provider.allKeywords.load(std::memory_order_relaxed) & ~kKeyword) == 0;
}

} // namespace

std::int32_t WriteMarkerMessage(
    const scMarkerSeries& series, unsigned importance, const wchar_t* format, va_list arguments)
{
    if (!IsMessageWanted(*series.provider, importance))
        return 0;
    const scMarkerSpan message = {&series, 0, kMessageCategory, static_cast<std::uint8_t>(importance)};
    return WriteFormatted(MarkerEvent::WriteMessage, message, format, arguments);
}

std::int32_t EnterMarkerSpan(const scMarkerSeries& series, scMarkerSpan& span, const wchar_t* format, va_list arguments)
{
    span = {&series, NextSpanId(*series.provider), kSpanCategory, kSpanImportance};
    return WriteFormatted(MarkerEvent::EnterSpan, span, format, arguments);
}

std::int32_t LeaveMarkerSpan(const scMarkerSpan& span)
{
    if (span.series->provider->enabled.load(std::memory_order_acquire) == 0)
        return 0;
    return WriteMarker(MarkerEvent::LeaveSpan, span, L"", 0);
}

} // namespace qx
