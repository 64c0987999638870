#include "stacks/window_update_lock.h"

#include "module/late_libraries.h"

namespace qx
{
namespace
{

constexpr int kStyle = -16;
constexpr LONG kChildStyle = 0x40000000;

} // namespace

WindowUpdateLock::WindowUpdateLock(HWND window)
{
    auto& user = User32();
    if (!window || !user.p_GetParent.IsThere() || !user.p_GetWindowLong.IsThere() || !user.p_LockWindowUpdate.IsThere())
        return;
    while (window && (user.p_GetWindowLong(window, kStyle) & kChildStyle) != 0)
        window = user.p_GetParent(window);
    _isLocked = window && user.p_LockWindowUpdate(window);
}

WindowUpdateLock::~WindowUpdateLock()
{
    if (_isLocked)
        User32().p_LockWindowUpdate(nullptr);
}

} // namespace qx
