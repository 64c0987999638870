#include "threads/message_box_thread.h"

namespace qx
{

clsMessageBoxThread::clsMessageBoxThread(const String& caption, const String& text, unsigned style, int initialResult)
    : clsThreadBase(L"GPFInfo::clsMessageBox"),
      _text(text),
      _caption(caption),
      _style(style),
      _result(initialResult)
{
    if (ThreadStart(THREAD_PRIORITY_NORMAL))
        return;
    ThreadEnd(true, 1000, true);
    _result = Show(_style);
}

clsMessageBoxThread::~clsMessageBoxThread()
{
    ThreadEnd(false, INFINITE, true);
}

unsigned clsMessageBoxThread::ThreadProc()
{
    _result = Show(_style | MB_TASKMODAL | MB_SETFOREGROUND);
    return 0;
}

int clsMessageBoxThread::Show(unsigned style) const
{
    return MessageBoxW(nullptr, _text.Text(), _caption.Text(), style);
}

} // namespace qx
