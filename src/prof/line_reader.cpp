#include "prof/line_reader.h"

#include "core/charset/charset_conversion.h"
#include "core/system_values.h"
#include "files/file.h"
#include "prof/text_scan.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <utility>

namespace qx
{

namespace
{

template <class Char>
bool IsLineBreak(Char c)
{
    return c == '\r' || c == '\n';
}

template <class Char>
Char* SkipLineBreaks(Char* text, const Char* end)
{
    while (text < end && IsLineBreak(*text))
        ++text;
    return text;
}

template <class Char>
Char* SkipBlanks(Char* text, const Char* end)
{
    while (text < end && (*text == ' ' || *text == '\t'))
        ++text;
    return text;
}

char* FindNarrowLineEnd(char* text)
{
    return text + strcspn(text, "\r\n");
}

wchar_t* FindWideLineEnd(wchar_t* text)
{
    return FindLineEnd(text).end;
}

// Returns the position where the search for the next line starts. `lineEnd` is the end of a line's text. If a zero
// ended the line, the rest of the line is skipped.
template <class Char, class Find>
Char* BehindLine(Char* lineEnd, Char* end, Find find)
{
    while (lineEnd < end && *lineEnd == 0)
        lineEnd = find(lineEnd + 1);
    return std::min(lineEnd + 1, end);
}

bool IsAscii(const char* text, std::size_t length)
{
    return std::all_of(text, text + length, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

} // namespace

clsProfLineReader::clsProfLineReader(clsFile& file, UTFType encoding)
{
    const std::int64_t bytes = file.GetSize() - std::max<std::int64_t>(file.Tell(), 0);
    if (bytes > kLargestSource)
        return;
    const std::size_t count = static_cast<std::size_t>(std::max<std::int64_t>(bytes, 0));
    _sourceBytes = count;
    if (encoding == UTFType::UTF16LE || encoding == UTFType::UTF16BE)
        LoadWide(file, count);
    else
    {
        _codePage = encoding == UTFType::UTF8 ? CP_UTF8 : DefaultCodePage();
        LoadNarrow(file, count);
    }
}

void clsProfLineReader::LoadWide(clsFile& file, std::size_t bytes)
{
    const std::size_t count = bytes / sizeof(wchar_t);
    _isWide = true;
    _hasLostText = bytes % sizeof(wchar_t) != 0;
    _wide.reset(new (std::nothrow) wchar_t[count + 1 + kScanPadding]);
    if (_wide == nullptr)
        return;
    const auto wanted = static_cast<std::uint32_t>(count * sizeof(wchar_t));
    const bool isWhole = file.Read(_wide.get(), wanted) == wanted;
    _nextWide = _wide.get();
    _endWide = _nextWide + (isWhole ? count : 0);
    std::fill_n(_endWide, 1 + kScanPadding, L'\0');
    _isLoaded = true;
}

void clsProfLineReader::LoadNarrow(clsFile& file, std::size_t bytes)
{
    _narrow.reset(new (std::nothrow) char[bytes + 2]);
    if (_narrow == nullptr)
        return;
    const std::uint32_t read = file.Read(_narrow.get(), static_cast<std::uint32_t>(bytes));
    _nextNarrow = _narrow.get();
    _endNarrow = _nextNarrow + std::min<std::size_t>(read, bytes);
    _endNarrow[0] = _endNarrow[1] = 0;
    _isLoaded = true;
}

bool clsProfLineReader::NextLine(scProfLine& line)
{
    return IsWide() ? NextWideLine(line) : NextNarrowLine(line);
}

bool clsProfLineReader::NextWideLine(scProfLine& line)
{
    wchar_t* const begin = SkipLineBreaks(_nextWide, _endWide);
    if (begin == _endWide)
        return false;
    line.text = SkipBlanks(begin, _endWide);
    const scLineEnd found = FindLineEnd(line.text);
    line.length = static_cast<std::size_t>(found.end - line.text);
    line.mayBeEncoded = found.mayBeEncoded;
    _nextWide = BehindLine(found.end, _endWide, FindWideLineEnd);
    _hasLostText |= *found.end == 0 && found.end < _endWide; // the rest of the line after a zero is lost
    *found.end = 0;
    return true;
}

bool clsProfLineReader::NextNarrowLine(scProfLine& line)
{
    char* const begin = SkipLineBreaks(_nextNarrow, _endNarrow);
    if (begin == _endNarrow)
        return false;
    char* const text = SkipBlanks(begin, _endNarrow);
    char* const end = FindNarrowLineEnd(text);
    _nextNarrow = BehindLine(end, _endNarrow, FindNarrowLineEnd);
    _hasLostText |= *end == 0 && end < _endNarrow;
    *end = 0;
    ConvertLine(text, static_cast<std::size_t>(end - text), line);
    return true;
}

// In every code page that a system can run on, bytes below 0x80 represent the characters of the same value.
void clsProfLineReader::ConvertLine(const char* text, std::size_t length, scProfLine& line)
{
    if (IsAscii(text, length))
    {
        _converted.assign(text, text + length + 1);
        line = {_converted.data(), length, false};
        return;
    }
    if (!_prefersUTF8 || !ConvertUTF8(text, length))
    {
        clsCharsetConversionStringCP conversion(_codePage, text);
        const std::wstring_view converted = conversion.GetWide();
        _converted.assign(converted.begin(), converted.end());
        _converted.push_back(0);
    }
    const std::wstring_view converted(_converted.data(), _converted.size() - 1);
    constexpr wchar_t kReplacement = 0xFFFD;
    _hasLostText |= converted.find(kReplacement) != std::wstring_view::npos;
    line = {_converted.data(), converted.size(), std::any_of(converted.begin(), converted.end(), IsInDecodedRow)};
}

// Returns false if the line isn't valid UTF-8.
bool clsProfLineReader::ConvertUTF8(const char* text, std::size_t length)
{
    _converted.resize(length + 1); // UTF-16 never needs more units than UTF-8 needs bytes
    const int room = static_cast<int>(length);
    const int count = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, room, _converted.data(), room);
    if (count <= 0)
        return false;
    _converted.resize(static_cast<std::size_t>(count));
    _converted.push_back(0);
    return true;
}

String clsProfLineReader::PeekLine() const
{
    if (!IsLoaded())
        return String();
    if (IsWide())
    {
        wchar_t* const text = SkipBlanks(SkipLineBreaks(_nextWide, _endWide), _endWide);
        return String(text, 0, static_cast<std::size_t>(FindWideLineEnd(text) - text));
    }
    char* const text = SkipBlanks(SkipLineBreaks(_nextNarrow, _endNarrow), _endNarrow);
    const std::string line(text, FindNarrowLineEnd(text));
    clsCharsetConversionStringCP conversion(_codePage, line.c_str());
    return String(conversion.GetWide());
}

} // namespace qx
