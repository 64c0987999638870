#include "stacks/stack_dump.h"

#include "stacks/debug_help_wrapper.h"

#include <memory>

namespace qx
{

void DumpStackTraceEx(int depth, bool, bool useThread, clsDebugOutput& output)
{
    class clsDBGHelpWrapperThis final : public clsDBGHelpWrapper
    {
    public:
        clsDBGHelpWrapperThis(int depth, bool useThread) : _depth(depth), _useThread(useThread) { Begin(); }
        ~clsDBGHelpWrapperThis() override { End(); }

        bool WalkOnOwnThread() override { return _useThread && clsDBGHelpWrapper::WalkOnOwnThread(); }
        int GetMaxFrames() override { return _depth; }

    private:
        const int _depth;
        const bool _useThread;
    };
    CONTEXT context{};
    RtlCaptureContext(&context);
    const std::unique_ptr<clsDBGHelpWrapperThis, CloseDebugHelpJob> job(new clsDBGHelpWrapperThis(depth, useThread));
    const StackTraceListPtr frames = job->GetStackTrace(context);
    if (!frames)
        return;
    for (const DBGStackTraceItem* const item : frames->Records())
        PrintFrame(*item, output);
}

} // namespace qx
