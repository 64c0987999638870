// A private debug output for a test, which writes to a log file.
#pragma once

#include "diag/debug_channels.h"
#include "support/filled.h"
#include "support/log_lines.h"
#include "support/temp_folder.h"

#include <string>
#include <vector>

namespace qxtest
{

class OwnOutput
{
public:
    OwnOutput() { channels.SetLogFile(qx::DebugLogFile(path, false)); }
    ~OwnOutput() { channels.Close(); }

    // Writes a line like the exported functions.
    void Write(const wchar_t* tag, int indentChange, const wchar_t* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        channels.Line(tag, indentChange, format, arguments);
        va_end(arguments);
    }

    std::vector<std::string> Lines() const { return LogLines(path); }
    // Returns the text after the stamps: sections, indentation, messages.
    std::vector<std::string> Rests() const
    {
        std::vector<std::string> rests;
        for (const std::string& line : Lines())
            rests.push_back(Parse(line).time.empty() ? "(no stamp) " + line : Parse(line).rest);
        return rests;
    }

    const TempFolder folder;
    const qx::String path = folder.Path(L"trace.log");
    qx::clsDebugChannels channels;
};

} // namespace qxtest
