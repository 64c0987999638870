// DllMain, the library's entry point.

#include "core/forever.h"
#include "diag/debug_channels.h"
#include "handles/handle_lists.h"
#include "module/module_frame.h"
#include "stacks/caller_lines.h"
#include "stacks/debug_help_wrapper.h"

#include <windows.h>

namespace
{

constexpr qx::ModuleSteps kSteps = {
    .prepareStacks = &qx::PrepareStacks,
    .startChannels = &qx::StartDebugChannels,
    .reportHandles = &qx::ReportLostHandles,
    .closeChannels = &qx::CloseDebugChannels,
};

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID reserved)
{
    if (reason == DLL_PROCESS_ATTACH)
        qx::AttachModule(library, kSteps);
    else if (reason == DLL_PROCESS_DETACH)
    {
        if (reserved)
            qx::SetProcessEnding();
        qx::EndDebugHelpThreads();
        qx::DetachModule(kSteps);
        if (!reserved)
            qx::DropForeverObjects();
    }
    return TRUE;
}
