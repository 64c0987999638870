// Describes addresses as text, using a session of the debug-help library.
#pragma once

#include "core/text/string.h"
#include "stacks/callers.h"
#include "stacks/debug_help_wrapper.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qx
{

// Formats an address. `isExact` states that it isn't a return address.
using AddressFormatter = String (*)(clsDBGHELP& session, std::uint64_t address, bool isExact);

// Formats addresses on the service thread of a job, and stores the texts in the same order. Returns false if the job
// has no session or ran out of time.
bool FormatAddresses(clsDBGHelpWrapper& job, std::vector<std::uint64_t> addresses, bool areExact,
    AddressFormatter format, std::vector<String>& texts);

// Describes the call chains of one report. The first chain opens a session that is used for the whole report, because
// each new session would load the symbols again.
class CallerTexts
{
public:
    // Returns the text of FormatFrame for each address, or nothing if no session could be opened.
    std::vector<String> Lines(const scCaller* callers, unsigned count);

private:
    std::unique_ptr<clsDBGHelpWrapperGPFProt, CloseDebugHelpJob> _job;
};

// Calls `receive` with the text of each address, "module!function + offset (file, line)", in order. The text is valid
// during the call. Returns false without a session. `areExact` states that they aren't return addresses.
bool DescribeAddresses(const std::uint64_t* addresses, std::size_t count, bool areExact,
    void (*receive)(void* user, std::size_t index, const wchar_t* text), void* user);

} // namespace qx
