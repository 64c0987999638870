// Traces the begin and end of a stream operation in the debug output.
#pragma once

#include "core/debug_line.h"
#include "core/developer_run.h"
#include "core/text/string.h"

#include <windows.h>

namespace qx
{

// Writes a line at the beginning of the operation and a line with its result at the end. Active only in developers'
// runs while debug output is received. Otherwise it costs two tests.
class clsTraceFrame
{
public:
    template <class... Arguments>
    explicit clsTraceFrame(const wchar_t* format, Arguments... arguments)
        : _active(UtilIsDebugActive() && UtilIsDeveloperRun())
    {
        if (_active)
        {
            String text;
            text.Format(format, arguments...);
            DebugLineIndent(1, L">%s", text.Text());
        }
    }
    clsTraceFrame(const clsTraceFrame&) = delete;
    clsTraceFrame& operator=(const clsTraceFrame&) = delete;
    ~clsTraceFrame()
    {
        if (_active)
            WriteEnd();
    }

    // Both return `result`, for use in a return statement.
    HRESULT End(HRESULT result)
    {
        _result = result;
        return result;
    }

    template <class... Arguments>
    HRESULT End(HRESULT result, const wchar_t* noteFormat, Arguments... arguments)
    {
        if (_active)
            _note.Format(noteFormat, arguments...);
        return End(result);
    }

private:
    void WriteEnd();

    bool _active;
    HRESULT _result = S_OK;
    String _note;
};

} // namespace qx
