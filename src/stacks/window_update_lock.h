// Keeps a window from being painted.
#pragma once

#include <windows.h>

namespace qx
{

// Stops the painting of the top-level window that contains `window`, for the lifetime of the object. Does nothing for a
// null window or on systems without windows.
class WindowUpdateLock
{
public:
    explicit WindowUpdateLock(HWND window);
    WindowUpdateLock(const WindowUpdateLock&) = delete;
    WindowUpdateLock& operator=(const WindowUpdateLock&) = delete;
    ~WindowUpdateLock();

private:
    bool _isLocked = false;
};

} // namespace qx
