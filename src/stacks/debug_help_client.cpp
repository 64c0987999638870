#include "stacks/debug_help_client.h"

namespace qx
{
namespace
{

constexpr std::uint32_t kFramesOption = 1;
constexpr std::uint32_t kOwnThreadOption = 2;
constexpr std::uint32_t kFrames = 100;

} // namespace

clsUtilDebugHelpWrapper::clsUtilDebugHelpWrapper()
{
    if (!_library.p_UtilDebugHelpJobOpen.IsThere() || !_library.p_UtilDebugHelpSetOption.IsThere() ||
        !_library.p_UtilDebugHelpJobClose.IsThere())
        return;
    _job = _library.p_UtilDebugHelpJobOpen();
    if (!_job)
        return;
    auto& isAllowed = _library.p_UtilGetUIInteractionAllowed;
    _library.p_UtilDebugHelpSetOption(_job, kFramesOption, kFrames);
    _library.p_UtilDebugHelpSetOption(_job, kOwnThreadOption, !isAllowed.IsThere() || isAllowed() != 0 ? 1 : 0);
}

clsUtilDebugHelpWrapper::~clsUtilDebugHelpWrapper()
{
    if (_job)
        _library.p_UtilDebugHelpJobClose(_job);
}

} // namespace qx
