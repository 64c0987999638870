#include "log_reader.h"

#include "text.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <utility>

namespace qxut
{
namespace
{

constexpr std::uint64_t kLongestLine = 2 * (1024 + 2); // in bytes, including the line end
constexpr std::size_t kChunk = 1 << 16;
constexpr std::size_t kTagWidth = 8;

std::string ToUtf8(const std::u16string& units)
{
    std::vector<QXWCHAR> text(units.begin(), units.end());
    std::replace(text.begin(), text.end(), QXWCHAR{0}, static_cast<QXWCHAR>(0xFFFD)); // a zero would end the text
    text.push_back(0);
    return Utf8(text.data());
}

// Removes the prefix that matches the picture and returns it, or returns an empty text. In the picture, 9 means a digit
// and f a hexadecimal digit.
std::string_view Take(std::string_view& text, std::string_view picture)
{
    const auto fits = [](char c, char pictured)
    {
        const bool isDigit = c >= '0' && c <= '9';
        return pictured == '9' ? isDigit : pictured == 'f' ? isDigit || (c >= 'a' && c <= 'f') : c == pictured;
    };
    if (text.size() < picture.size() || !std::equal(picture.begin(), picture.end(), text.begin(),
                                            [&](char pictured, char c) { return fits(c, pictured); }))
        return {};
    const std::string_view taken = text.substr(0, picture.size());
    text.remove_prefix(picture.size());
    return taken;
}

// Returns true for a slash and two or more hexadecimal digits. Machines with very many processors need more than two.
bool IsProcessor(std::string_view text)
{
    constexpr std::size_t kShortest = 3;
    constexpr std::size_t kLongest = 9;
    return text.size() >= kShortest && text.size() <= kLongest && text[0] == '/' &&
           text.find_first_not_of("0123456789abcdef", 1) == text.npos;
}

bool TakeStamp(std::string_view rest, LogColumns& columns)
{
    columns.time = Take(rest, "99:99:99.999 ");
    if (columns.time.empty())
        columns.time = Take(rest, "99:99.999 ");
    columns.thread = Take(rest, "ffffffff");
    if (columns.time.empty() || columns.thread.empty())
        return false;
    columns.time.remove_suffix(1);
    columns.processor = rest.substr(0, rest.find(' '));
    rest.remove_prefix(columns.processor.size());
    if (!IsProcessor(columns.processor) || Take(rest, " 9 ").empty())
        return false;
    columns.digit = std::string_view(rest.data() - 2, 1);
    columns.text = rest;
    return true;
}

} // namespace

// Starts far enough before the end of the file for the requested lines and one incomplete line, even if all of them
// have the maximum length.
LogReader::LogReader(std::filesystem::path path, std::size_t lastLines) : _path(std::move(path))
{
    std::error_code error;
    const std::uint64_t size = std::filesystem::file_size(_path, error);
    if (error || lastLines == kAll)
        return;
    const bool isPart = lastLines + 2 < size / kLongestLine;
    if (isPart)
        _position = (size - (lastLines + 2) * kLongestLine) / 2 * 2;
    bool isFirst = isPart;
    std::vector<std::string> found;
    for (std::vector<std::string> lines = Next(); !lines.empty(); lines = Next())
    {
        found.insert(found.end(), lines.begin() + (isFirst ? 1 : 0), lines.end());
        isFirst = false;
        if (found.size() > lastLines)
            found.erase(found.begin(), found.end() - static_cast<std::ptrdiff_t>(lastLines));
    }
    _found = std::move(found);
}

// Reads further chunks until one contains a line end.
std::vector<std::string> LogReader::Next()
{
    if (!_found.empty())
        return std::exchange(_found, {});
    std::vector<std::string> lines;
    std::error_code error;
    if (const std::uint64_t size = std::filesystem::file_size(_path, error); error || size < _position)
    {
        _position = 0;
        _line.clear();
        if (error)
            return lines;
    }
    std::ifstream file(_path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(_position));
    std::string bytes;
    do
    {
        bytes.resize(kChunk);
        file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        bytes.resize(static_cast<std::size_t>(file.gcount()) / 2 * 2);
        _position += bytes.size();
        Append(bytes, lines);
    } while (lines.empty() && bytes.size() == kChunk);
    return lines;
}

void LogReader::Append(const std::string& bytes, std::vector<std::string>& lines)
{
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
    {
        const auto low = static_cast<unsigned char>(bytes[i]);
        const auto high = static_cast<unsigned char>(bytes[i + 1]);
        _line.push_back(static_cast<char16_t>(high << 8 | low));
        if (const std::size_t length = _line.size();
            length >= 2 && _line[length - 2] == u'\r' && _line[length - 1] == u'\n')
        {
            _line.erase(length - 2);
            lines.push_back(ToUtf8(_line));
            _line.clear();
        }
    }
}

std::string LogReader::Rest() const
{
    return ToUtf8(_line);
}

LogColumns ColumnsOf(std::string_view line)
{
    LogColumns columns;
    if (TakeStamp(line, columns))
        return columns;
    // A tag may be longer than its column and contain any characters, so try each colon after the column.
    for (std::size_t colon = line.find(": "); colon != line.npos; colon = line.find(": ", colon + 1))
        if (colon >= kTagWidth && TakeStamp(line.substr(colon + 2), columns))
        {
            columns.tag = line.substr(0, colon + 2);
            return columns;
        }
    columns = {};
    columns.text = line;
    return columns;
}

// Parses a line of a report: an empty name column, a colon, a blank for each level, and the text.
bool ParseReportLine(std::string_view text, ReportLine& line)
{
    constexpr std::string_view kColumn = "        :";
    constexpr std::size_t kBlanks = kColumn.size() - 1;
    std::size_t colon = text.find_first_not_of(' ');
    if (colon != text.npos && text[colon] == '[')
    {
        colon = text.find(kColumn, colon);
        if (colon == text.npos || !text.substr(0, colon).ends_with("] "))
            return false;
        colon += kBlanks;
    }
    if (colon == text.npos || text[colon] != ':' || colon < kBlanks)
        return false;
    line.before = text.substr(0, colon - kBlanks);
    line.text = text.substr(colon + 1);
    const std::size_t begin = std::min(line.text.find_first_not_of(' '), line.text.size());
    line.depth = begin;
    line.text.remove_prefix(begin);
    return true;
}

} // namespace qxut
