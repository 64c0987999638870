#include "diag/lengthy_op.h"

namespace qx
{
namespace
{

// Both texts, a bar and a way to abort.
constexpr std::int32_t kDialogParts = 6;

// Keeps the window above all others. The functions are bound late, because not every system has windows.
void PutOnTop(HWND window)
{
    const HWND aboveAll = reinterpret_cast<HWND>(LONG_PTR{-1});
    constexpr UINT kKeepPlaceAndSize = 3;
    auto& user = User32();
    if (window && user.p_IsWindow.IsThere() && user.p_SetWindowPos.IsThere() && user.p_IsWindow(window))
        user.p_SetWindowPos(window, aboveAll, 0, 0, 0, 0, kKeepPlaceAndSize);
}

} // namespace

clsLengthyOp::clsLengthyOp(const String& firstText, const String& secondText)
    : _firstText(firstText),
      _secondText(secondText)
{
    if (_library.p_CtlJobOpenEx.IsThere())
        _job = _library.p_CtlJobOpenEx();
    if (_job == 0 && _library.p_CtlJobOpen.IsThere())
        _library.p_CtlJobOpen();
    if (_library.p_CtlAbortDlgStart.IsThere())
        _dialog = _library.p_CtlAbortDlgStart(nullptr, _firstText.Text(), _secondText.Text(), kDialogParts);
    if (_library.p_CtlAbortDlgHWnd.IsThere())
        PutOnTop(_library.p_CtlAbortDlgHWnd(_dialog));
}

clsLengthyOp::~clsLengthyOp()
{
    if (_library.p_CtlAbortDlgEnd.IsThere())
        _library.p_CtlAbortDlgEnd(_dialog);
    if (_job != 0)
    {
        if (_library.p_CtlJobCloseEx.IsThere())
            _library.p_CtlJobCloseEx(_job);
    }
    else if (_library.p_CtlJobClose.IsThere())
        _library.p_CtlJobClose();
}

void clsLengthyOp::SetText(const String& text)
{
    const String both = _secondText + L"\n" + text;
    if (_library.p_CtlAbortDlgSetText.IsThere())
        _library.p_CtlAbortDlgSetText(_dialog, both.Text(), -1);
    CheckAbort();
}

void clsLengthyOp::SetProgress(std::uint32_t percent)
{
    if (_library.p_CtlAbortDlgSetText.IsThere())
        _library.p_CtlAbortDlgSetText(_dialog, nullptr, static_cast<std::int32_t>(percent));
    CheckAbort();
}

bool clsLengthyOp::CheckAbort()
{
    return !_library.p_CtlAbortDlgCheckAbort.IsThere() || _library.p_CtlAbortDlgCheckAbort(_dialog) < 0;
}

} // namespace qx
