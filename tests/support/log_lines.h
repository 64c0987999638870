// The lines of a log file.
#pragma once

#include "core/pattern/regex.h"
#include "support/temp_folder.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qxtest
{

// Returns the lines in 8 bits, without their "\r\n"; non-ASCII characters become question marks. An incomplete last
// line is marked as such.
inline std::vector<std::string> LogLines(const qx::String& path)
{
    std::vector<std::string> lines;
    std::string line;
    const std::string bytes = BytesOf(path);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
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

// A line split at its stamp. `time` is empty if the line has no stamp.
struct LogLine
{
    std::string tag; // with everything before the stamp
    std::string time;
    std::string thread;
    std::string processor;
    char digit = 0;
    std::string rest; // section, indentation, message
};

inline LogLine Parse(const std::string& line)
{
    constexpr std::uint32_t kDotAll = 0x20;
    qx::clsRegEx stamp(L"^(.*?)(\\d\\d:\\d\\d:\\d\\d\\.\\d{3}) ([0-9a-f]{8})/([^ ]{2,}) (\\d) (.*)$", kDotAll);
    qx::String text;
    text.Assign(line.c_str());
    qx::clsRegExMatchList parts;
    if (!stamp.Match(text, &parts))
        return {};
    const auto part = [&parts](std::size_t group)
    {
        return std::string(parts[group].text.NarrowText());
    };
    return {part(1), part(2), part(3), part(4), part(5)[0], part(6)};
}

} // namespace qxtest
