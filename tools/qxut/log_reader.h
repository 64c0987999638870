// Reads the lines of a log file, also while the file grows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace qxut
{

class LogReader
{
public:
    static constexpr std::size_t kAll = ~std::size_t{0};

    // Starts with the last `lastLines` existing lines, or with all of them.
    LogReader(std::filesystem::path path, std::size_t lastLines);

    // Returns the next lines in UTF-8, possibly not all lines that were added since the last call. Empty if there are
    // no new lines or no file. A file that has become shorter is read again from its start.
    std::vector<std::string> Next();

    // Returns the text after the last line end: a line that is being written or was truncated.
    std::string Rest() const;

private:
    void Append(const std::string& bytes, std::vector<std::string>& lines);

    const std::filesystem::path _path;
    std::uint64_t _position = 0;
    std::u16string _line;            // the part read so far
    std::vector<std::string> _found; // read by the constructor
};

// The columns of a line. If the line has no stamp in the usual place, `text` is the whole line.
struct LogColumns
{
    std::string_view tag; // with the colon and blank
    std::string_view time;
    std::string_view thread;    // 8 digits
    std::string_view processor; // with the slash
    std::string_view digit;
    std::string_view text; // section, indentation, thread name and message
};

LogColumns ColumnsOf(std::string_view line);

// A line of a report, which has its own nesting. Blocks consist of a line and the deeper lines that follow it.
struct ReportLine
{
    std::string_view before; // indentation and thread name
    std::size_t depth = 0;
    std::string_view text;
};

// Returns false if the text isn't a line of a report.
bool ParseReportLine(std::string_view text, ReportLine& line);

} // namespace qxut
