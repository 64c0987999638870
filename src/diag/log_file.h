// The log file of the debug output.
#pragma once

#include "core/text/string.h"

#include <cstddef>

namespace qx
{

// Raw UTF-16LE, without a byte order mark. Every line opens the file and closes it, so several processes may share one.
class DebugLogFile
{
public:
    DebugLogFile() = default;
    DebugLogFile(const String& name, bool isFlushed) : _name(name), _isFlushed(isFlushed) {}

    // As the machine's settings Debug.LogFilename and Debug.LogFile.Flush say. Without a name there is no log. A name
    // without a folder stands for a file in the temp folder.
    static DebugLogFile FromSettings();

    bool IsSet() const { return !_name.IsEmpty(); }
    const String& Name() const { return _name; }
    bool IsFlushed() const { return _isFlushed; }

    // Waits a tenth of a second for a file that somebody else has; then beeps, and the line is lost.
    void Append(const wchar_t* line, std::size_t length) const;

private:
    String _name;
    bool _isFlushed = false;
};

} // namespace qx
