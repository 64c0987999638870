// A message box that doesn't block its caller.
#pragma once

#include "threads/thread_base.h"

namespace qx
{

// Shows the box on a thread of its own. If the thread can't be created, the constructor shows the box and blocks. The
// destructor waits until the user has closed the box.
class clsMessageBoxThread final : public clsThreadBase
{
public:
    clsMessageBoxThread(const String& caption, const String& text, unsigned style, int initialResult);
    ~clsMessageBoxThread() override;

    unsigned ThreadProc() override;

    // Returns `initialResult` until the box is closed.
    int Result() const { return _result; }

private:
    int Show(unsigned style) const;

    const String _text;
    const String _caption;
    const unsigned _style;
    std::atomic<int> _result;
};

} // namespace qx
