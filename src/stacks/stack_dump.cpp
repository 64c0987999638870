#include "stacks/stack_dump.h"

#include "stacks/debug_help_wrapper.h"

#include <vector>

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

bool DescribeAddresses(const std::uint64_t* addresses, std::size_t count, bool areExact,
    void (*receive)(void* user, std::size_t index, const wchar_t* text), void* user)
{
    // Shared with the service thread, which may outlive the call if it is cut off.
    struct Request
    {
        std::vector<std::uint64_t> addresses;
        std::vector<String> texts;
        bool areExact = false;
    };
    const auto request = std::make_unique<std::shared_ptr<Request>>(std::make_shared<Request>());
    (*request)->addresses.assign(addresses, addresses + count);
    (*request)->areExact = areExact;
    auto own = std::make_unique<std::shared_ptr<Request>>(*request);
    const std::unique_ptr<clsDBGHelpWrapperGPFProt, CloseDebugHelpJob> job(new clsDBGHelpWrapperGPFProt);
    const auto describe = [](clsDBGHELP& session, void* argument)
    {
        const std::shared_ptr<Request> shared = *static_cast<std::shared_ptr<Request>*>(argument);
        const auto item = std::make_unique<DBGStackTraceItem>();
        for (const std::uint64_t address : shared->addresses)
        {
            session.Describe(*item, address, shared->areExact, 0, clsDBGHELP::kModule | clsDBGHELP::kSymbolAndLine);
            const char* const name = item->fullName[0] ? item->fullName : item->name[0] ? item->name : item->symbol;
            String text;
            if (!item->module[0])
                text = String(String::kFormatted, L"0x%08I64x", address);
            else if (*name)
                text = String(String::kFormatted, L"%hs!%hs + 0x%I64x", item->module, name, item->displacement);
            else
                text = String(String::kFormatted, L"%hs!+0x%I64x", item->module, address - item->moduleBase);
            if (item->file[0])
                text += String(String::kFormatted, L" (%hs, line %d)", item->file, static_cast<int>(item->line));
            shared->texts.push_back(std::move(text));
        }
        return true;
    };
    if (!job->HasSession())
        return false;
    const bool isDone = job->RunInSession(describe, own.get());
    if (job->IsCutOff())
        own.release(); // still used
    if (!isDone)
        return false;
    for (std::size_t index = 0; index < (*request)->texts.size(); ++index)
        receive(user, index, (*request)->texts[index]);
    return true;
}

} // namespace qx
