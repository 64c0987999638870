// The log file of the debug output.
#pragma once

#include "core/text/string.h"

#include <cstddef>

namespace qx
{

// A file of raw UTF-16LE without a byte order mark. It is opened and closed for each line, so several processes can
// share it.
class DebugLogFile
{
public:
    DebugLogFile() = default;
    DebugLogFile(const String& name, bool isFlushed) : _name(name), _isFlushed(isFlushed) {}

    // Reads the machine settings Debug.LogFilename and Debug.LogFile.Flush. Without a name there is no log file. A name
    // without a folder refers to the temp folder.
    static DebugLogFile FromSettings();

    bool IsSet() const { return !_name.IsEmpty(); }
    const String& Name() const { return _name; }
    bool IsFlushed() const { return _isFlushed; }

    // Waits up to 100 ms if the file is in use. After that, beeps and drops the line.
    void Append(const wchar_t* line, std::size_t length) const;

private:
    String _name;
    bool _isFlushed = false;
};

} // namespace qx
