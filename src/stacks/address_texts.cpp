#include "stacks/address_texts.h"

#include "stacks/frame_text.h"

#include <memory>
#include <utility>

namespace qx
{
namespace
{

// A request for texts. Shared by the caller and the service thread, which may still use it after the caller's time-out.
struct FormatRequest
{
    std::vector<std::uint64_t> addresses;
    std::vector<String> texts;
    AddressFormatter format = nullptr;
    bool areExact = false;
};
using SharedRequest = std::shared_ptr<FormatRequest>;

bool RunRequest(clsDBGHELP& session, void* argument)
{
    const SharedRequest request = *static_cast<SharedRequest*>(argument);
    request->texts.reserve(request->addresses.size());
    for (const std::uint64_t address : request->addresses)
        request->texts.push_back(request->format(session, address, request->areExact));
    return true;
}

String FrameLine(clsDBGHELP& session, std::uint64_t address, bool isExact)
{
    wchar_t text[kFrameTextSize];
    FormatFrame(address, text, clsDBGHELP::kAllDetail, session, isExact);
    return String(text);
}

String Description(clsDBGHELP& session, std::uint64_t address, bool isExact)
{
    const auto item = std::make_unique<DBGStackTraceItem>();
    session.Describe(*item, address, isExact, 0, clsDBGHELP::kModule | clsDBGHELP::kSymbolAndLine);
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
    return text;
}

} // namespace

bool FormatAddresses(clsDBGHelpWrapper& job, std::vector<std::uint64_t> addresses, bool areExact,
    AddressFormatter format, std::vector<String>& texts)
{
    if (!job.HasSession())
        return false;
    const auto request = std::make_shared<FormatRequest>();
    request->addresses = std::move(addresses);
    request->format = format;
    request->areExact = areExact;
    auto argument = std::make_unique<SharedRequest>(request);
    const bool isDone = job.RunInSession(RunRequest, argument.get());
    if (job.IsCutOff())
        argument.release(); // the service thread may still use it
    if (isDone)
        texts = std::move(request->texts);
    return isDone;
}

std::vector<String> CallerTexts::Lines(const scCaller* callers, unsigned count)
{
    if (!_job)
        _job.reset(new clsDBGHelpWrapperGPFProt(clsDBGHELP::kForTexts));
    std::vector<std::uint64_t> addresses(count);
    for (unsigned index = 0; index < count; ++index)
        addresses[index] = reinterpret_cast<std::uint64_t>(callers[index].address);
    std::vector<String> lines;
    FormatAddresses(*_job, std::move(addresses), false, FrameLine, lines);
    return lines;
}

bool DescribeAddresses(const std::uint64_t* addresses, std::size_t count, bool areExact,
    void (*receive)(void* user, std::size_t index, const wchar_t* text), void* user)
{
    const std::unique_ptr<clsDBGHelpWrapperGPFProt, CloseDebugHelpJob> job(
        new clsDBGHelpWrapperGPFProt(clsDBGHELP::kForTexts));
    std::vector<String> texts;
    if (!FormatAddresses(*job, {addresses, addresses + count}, areExact, Description, texts))
        return false;
    for (std::size_t index = 0; index < texts.size(); ++index)
        receive(user, index, texts[index]);
    return true;
}

} // namespace qx
