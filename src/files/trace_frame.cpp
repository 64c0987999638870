#include "files/trace_frame.h"

namespace qx
{

namespace
{

String ResultText(HRESULT result)
{
    if (result == S_OK)
    {
        return String(L"S_OK");
    }
    if (result == S_FALSE)
    {
        return String(L"S_FALSE");
    }
    return String::SystemErrorText(static_cast<unsigned>(result));
}

} // namespace

void clsTraceFrame::WriteEnd()
{
    const String result = ResultText(_result);
    if (_note.Length() == 0)
    {
        DebugLineIndent(-1, L"<%s", result.Text());
    }
    else
    {
        DebugLineIndent(-1, L"<%s (%s)", result.Text(), _note.Text());
    }
}

} // namespace qx
