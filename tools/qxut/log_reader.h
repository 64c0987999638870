// The lines of a log file, also while it grows.
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

    // Begins with the last lines that are there already, or with all of them.
    LogReader(std::filesystem::path path, std::size_t lastLines);

    // The next lines, in UTF-8: some of those that came since the last call. None if nothing came, or if there is no
    // such file at present. A file that became shorter is read from its start.
    std::vector<std::string> Next();

    // What stands behind the last line end: a line that is being written, or was cut off.
    std::string Rest() const;

private:
    void Append(const std::string& bytes, std::vector<std::string>& lines);

    const std::filesystem::path _path;
    std::uint64_t _position = 0;
    std::u16string _line;            // as far as it is read
    std::vector<std::string> _found; // by the constructor
};

// A line's columns. Without a stamp at its usual place all of it is the text.
struct LogColumns
{
    std::string_view tag; // with its colon and blank
    std::string_view time;
    std::string_view thread;    // 8 digits
    std::string_view processor; // with its slash
    std::string_view digit;
    std::string_view text; // section, indentation, the thread's name and the message
};

LogColumns ColumnsOf(std::string_view line);

} // namespace qxut
