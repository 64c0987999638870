#include "trace_reader.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <tuple>
#include <utility>

namespace qxut
{
namespace
{

constexpr std::size_t kFileHead = 24, kChunkHead = 32, kEventHead = 40;
constexpr std::string_view kChunkMagic = "QXCH";
constexpr std::size_t kLargestChunk = 1 << 20;
enum
{
    kEnterSpan = 1,
    kLeaveSpan = 2,
    kWriteMessage = 4,
};

// Reads numbers in this machine's byte order, which the file has.
template <class T>
T NumberAt(std::string_view bytes, std::size_t position)
{
    T number{};
    std::memcpy(&number, bytes.data() + position, sizeof(number));
    return number;
}

std::uint64_t SumOf(std::string_view bytes)
{
    std::uint64_t sum = 0xCBF29CE484222325;
    for (std::size_t position = 0; position + 8 <= bytes.size(); position += 8)
    {
        sum = (sum ^ NumberAt<std::uint64_t>(bytes, position)) * 0x9DDFEA08EB382D69;
        sum ^= sum >> 47;
    }
    return sum;
}

// Removes a zero-terminated UTF-16 text from the front. Returns nothing if it has no terminator.
std::optional<std::u16string> TakeText(std::string_view& bytes)
{
    std::u16string text;
    while (bytes.size() >= 2)
    {
        const auto unit = NumberAt<char16_t>(bytes, 0);
        bytes.remove_prefix(2);
        if (unit == 0)
            return text;
        text += unit;
    }
    return std::nullopt;
}

class Reader
{
public:
    explicit Reader(std::string_view bytes) : _bytes(bytes) {}

    TraceContents Read()
    {
        if (!_bytes.starts_with(std::string_view("QXTRACE\x01")) || _bytes.size() < kFileHead)
            return std::move(_result);
        _result.isTrace = true;
        _begin = _last = NumberAt<std::uint64_t>(_bytes, 8);
        _result.start = NumberAt<std::uint64_t>(_bytes, 16);
        _bytes.remove_prefix(kFileHead);
        while (!_bytes.empty())
            if (!ReadChunk())
                SkipToNextChunk();
        // Chunks of different threads follow each other, so the ends of spans may come before their beginnings.
        for (auto& [key, ends] : _ends)
            std::ranges::sort(ends);
        for (TraceMark& mark : _result.marks)
            if (mark.kind == TraceMark::Kind::UnfinishedSpan)
                mark.duration = _last - mark.time;
        for (std::size_t index = 0; index < _spans.size(); ++index)
            Finish(_spans[index]);
        for (TraceMark& mark : _result.marks)
            mark.time -= std::min(mark.time, _begin);
        std::ranges::stable_sort(_result.marks, {}, &TraceMark::time);
        return std::move(_result);
    }

private:
    // The lane and the id of a span. Ids repeat after 2^32 - 1 spans.
    using SpanKey = std::pair<std::size_t, std::uint32_t>;

    bool ReadChunk()
    {
        if (_bytes.size() < kChunkHead || !_bytes.starts_with(kChunkMagic))
            return false;
        const auto kind = NumberAt<std::uint32_t>(_bytes, 4), process = NumberAt<std::uint32_t>(_bytes, 8);
        const auto size = NumberAt<std::uint32_t>(_bytes, 12);
        if (size > kLargestChunk || size > _bytes.size() - kChunkHead)
            return false;
        const std::string_view contents = _bytes.substr(kChunkHead, size);
        if (SumOf(contents) != NumberAt<std::uint64_t>(_bytes, 24))
            return false;
        _result.lost += NumberAt<std::uint64_t>(_bytes, 16);
        if (kind == 1)
            _result.processes[process] = contents.substr(0, contents.find('\0'));
        else if (kind == 0)
            ReadEvents(process, contents);
        _bytes.remove_prefix(kChunkHead + size);
        return true;
    }

    void SkipToNextChunk()
    {
        ++_result.damaged;
        const std::size_t next = _bytes.find(kChunkMagic, 1);
        _bytes.remove_prefix(std::min(next, _bytes.size()));
    }

    void ReadEvents(std::uint32_t process, std::string_view bytes)
    {
        while (bytes.size() >= kEventHead)
        {
            const auto size = NumberAt<std::uint32_t>(bytes, 0), dataSize = NumberAt<std::uint32_t>(bytes, 4);
            if (size < kEventHead || size > bytes.size() || dataSize > size - kEventHead)
            {
                ++_result.damaged;
                return;
            }
            ReadEvent(process, bytes, bytes.substr(kEventHead, dataSize));
            bytes.remove_prefix(size);
        }
    }

    // Events other than spans and messages, such as the manifest, aren't shown.
    void ReadEvent(std::uint32_t process, std::string_view head, std::string_view data)
    {
        const auto id = NumberAt<std::uint16_t>(head, 24);
        const bool isSpan = id == kEnterSpan || id == kLeaveSpan;
        if (!isSpan && id != kWriteMessage)
            return;
        const std::size_t fixed = isSpan ? 7 : 3;
        if (data.size() < fixed)
            return void(++_result.damaged);
        const std::uint32_t spanId = isSpan ? NumberAt<std::uint32_t>(data, 3) : 0;
        data.remove_prefix(fixed);
        const auto name = TakeText(data);
        auto text = name ? TakeText(data) : std::nullopt;
        if (!text)
            return void(++_result.damaged);
        const auto time = NumberAt<std::uint64_t>(head, 8);
        _last = std::max(_last, time);
        const std::size_t lane = LaneOf(process, NumberAt<std::uint32_t>(head, 20), *name);
        if (id == kLeaveSpan)
            return _ends[{lane, spanId}].push_back(time);
        const auto kind = isSpan ? TraceMark::Kind::UnfinishedSpan : TraceMark::Kind::Message;
        if (isSpan)
            _spans.push_back({_result.marks.size(), {lane, spanId}});
        _result.marks.push_back({kind, process, NumberAt<std::uint32_t>(head, 16), lane, time, 0, std::move(*text)});
    }

    std::size_t LaneOf(std::uint32_t process, std::uint32_t registration, const std::u16string& name)
    {
        const auto [lane, isNew] = _lanes.try_emplace({process, registration, name}, _result.lanes.size());
        if (isNew)
            _result.lanes.push_back({process, name});
        return lane->second;
    }

    struct OpenSpan
    {
        std::size_t mark;
        SpanKey key;
    };

    // Sets the end of a span: the first end with its id after its beginning.
    void Finish(const OpenSpan& span)
    {
        const auto ends = _ends.find(span.key);
        if (ends == _ends.end())
            return;
        TraceMark& mark = _result.marks[span.mark];
        const auto end = std::ranges::lower_bound(ends->second, mark.time);
        if (end == ends->second.end())
            return;
        mark.kind = TraceMark::Kind::Span;
        mark.duration = *end - mark.time;
    }

    std::string_view _bytes;
    TraceContents _result;
    std::uint64_t _begin = 0, _last = 0;
    std::map<std::tuple<std::uint32_t, std::uint32_t, std::u16string>, std::size_t> _lanes;
    std::map<SpanKey, std::vector<std::uint64_t>> _ends;
    std::vector<OpenSpan> _spans;
};

} // namespace

TraceContents ReadTrace(std::string_view bytes)
{
    return Reader(bytes).Read();
}

} // namespace qxut
