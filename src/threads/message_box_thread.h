// A message box that nobody has to wait for.
#pragma once

#include "threads/thread_base.h"

namespace qx
{

// Shows the box from a thread of its own; where there can't be one, the constructor shows it and waits. The destructor
// waits until the user has closed the box.
class clsMessageBoxThread final : public clsThreadBase
{
public:
    clsMessageBoxThread(const String& caption, const String& text, unsigned style, int initialResult);
    ~clsMessageBoxThread() override;

    unsigned ThreadProc() override;

    // The initial one until the box is closed.
    int Result() const { return _result; }

private:
    int Show(unsigned style) const;

    const String _text;
    const String _caption;
    const unsigned _style;
    std::atomic<int> _result;
};

} // namespace qx
