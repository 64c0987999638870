#include "process/command_line.h"

#include <algorithm>

namespace qxplatform
{
namespace
{

bool IsBlank(char16_t character)
{
    return character == u' ' || character == u'\t';
}

void SkipBlanks(std::u16string_view& line)
{
    while (!line.empty() && IsBlank(line[0]))
        line.remove_prefix(1);
}

std::u16string TakeProgram(std::u16string_view& line)
{
    const bool isQuoted = !line.empty() && line[0] == u'"';
    if (isQuoted)
        line.remove_prefix(1);
    const std::size_t end = std::min(isQuoted ? line.find(u'"') : line.find_first_of(u" \t"), line.size());
    std::u16string program(line.substr(0, end));
    line.remove_prefix(std::min(end + 1, line.size()));
    return program;
}

std::u16string TakeArgument(std::u16string_view& line)
{
    std::u16string argument;
    bool isQuoted = false;
    while (!line.empty() && (isQuoted || !IsBlank(line[0])))
    {
        const std::size_t backslashes = std::min(line.find_first_not_of(u'\\'), line.size());
        line.remove_prefix(backslashes);
        if (line.empty() || line[0] != u'"')
        {
            argument.append(backslashes, u'\\');
            if (backslashes > 0)
                continue;
            argument += line[0];
        }
        else
        {
            argument.append(backslashes / 2, u'\\');
            const bool isDoubled = isQuoted && line.size() > 1 && line[1] == u'"';
            if (backslashes % 2 != 0)
                argument += u'"';
            else if (isDoubled)
            {
                // Inside quotes, two quotes mean one.
                argument += u'"';
                line.remove_prefix(1);
            }
            else
                isQuoted = !isQuoted;
        }
        line.remove_prefix(1);
    }
    return argument;
}

} // namespace

std::vector<std::u16string> SplitCommandLine(std::u16string_view line)
{
    std::vector<std::u16string> arguments{TakeProgram(line)};
    for (SkipBlanks(line); !line.empty(); SkipBlanks(line))
        arguments.push_back(TakeArgument(line));
    return arguments;
}

} // namespace qxplatform
