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

namespace detail
{

// Takes what matches off the front: 9 for a digit, f for a hexadecimal one, all else for itself. Empty if it doesn't.
inline std::string Take(std::string_view& text, std::string_view picture)
{
    if (text.size() < picture.size())
        return "";
    for (size_t i = 0; i < picture.size(); ++i)
    {
        const auto c = static_cast<unsigned char>(text[i]);
        const bool fits = picture[i] == '9'   ? std::isdigit(c) != 0
                          : picture[i] == 'f' ? std::isxdigit(c) != 0 && !std::isupper(c)
                                              : c == static_cast<unsigned char>(picture[i]);
        if (!fits)
            return "";
    }
    const std::string taken(text.substr(0, picture.size()));
    text.remove_prefix(picture.size());
    return taken;
}

} // namespace detail

// With an empty time if there is no stamp in the line.
inline LogLine Parse(const std::string& line, std::string_view timePicture = "99:99:99.999")
{
    for (size_t begin = 0; begin < line.size(); ++begin)
    {
        std::string_view rest = std::string_view(line).substr(begin);
        LogLine parsed;
        parsed.time = detail::Take(rest, timePicture);
        if (parsed.time.empty() || detail::Take(rest, " ").empty())
            continue;
        parsed.thread = detail::Take(rest, "ffffffff");
        if (parsed.thread.empty() || detail::Take(rest, "/").empty())
            continue;
        const std::string_view processor = rest.substr(0, rest.find(' '));
        parsed.processor = std::string(processor);
        rest.remove_prefix(processor.size());
        if (processor.size() < 2 || detail::Take(rest, " 9 ").empty())
            continue;
        parsed.digit = rest.data()[-2];
        parsed.tag = line.substr(0, begin);
        parsed.rest = std::string(rest);
        return parsed;
    }
    return {};
}

} // namespace qxtest
