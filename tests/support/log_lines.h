// The lines of a log file.
#pragma once

#include "support/temp_folder.h"

#include <cctype>
#include <string>
#include <string_view>
#include <vector>

namespace qxtest
{

// In 8 bits; what is no ASCII is a question mark. Without the line ends, which are "\r\n"; a rest without one counts as
// a line that says so.
inline std::vector<std::string> LogLines(const qx::String& path)
{
    std::vector<std::string> lines;
    std::string line;
    const std::string bytes = BytesOf(path);
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
    {
        line += bytes[i + 1] == 0 && static_cast<unsigned char>(bytes[i]) < 0x80 ? bytes[i] : '?';
        if (line.ends_with("\r\n"))
        {
            lines.push_back(line.substr(0, line.size() - 2));
            line.clear();
        }
    }
    if (!line.empty() || bytes.size() % 2 != 0)
        lines.push_back(line + "(without an end)");
    return lines;
}

// A line taken apart where its stamp stands.
struct LogLine
{
    std::string tag; // with what stands behind it
    std::string time;
    std::string thread;
    std::string processor;
    char digit = 0;
    std::string rest; // section, indentation, message
};

// Whether the picture stands there: 9 for a digit, f for a hexadecimal one, all else for itself.
inline bool Stands(std::string_view picture, std::string_view line, size_t at)
{
    for (const char wanted : picture)
    {
        const int c = at < line.size() ? static_cast<unsigned char>(line[at++]) : 0;
        const bool fits = wanted == '9'   ? std::isdigit(c) != 0
                          : wanted == 'f' ? std::isxdigit(c) != 0 && std::isupper(c) == 0
                                          : c == wanted;
        if (!fits)
            return false;
    }
    return true;
}

// With an empty time if there is no stamp in the line.
inline LogLine Parse(const std::string& line, std::string_view timePicture = "99:99:99.999")
{
    for (size_t begin = 0; begin < line.size(); ++begin)
    {
        const size_t thread = begin + timePicture.size() + 1, processor = thread + 9;
        if (!Stands(std::string(timePicture) + " ffffffff/", line, begin))
            continue;
        const size_t end = line.find(' ', processor);
        if (end != std::string::npos && end >= processor + 2 && Stands(" 9 ", line, end))
            return {line.substr(0, begin), line.substr(begin, timePicture.size()), line.substr(thread, 8),
                line.substr(processor, end - processor), line[end + 1], line.substr(end + 3)};
    }
    return {};
}

} // namespace qxtest
