#include "core/errors/failure_text.h"

#include "core/critical_section.h"
#include "core/forever.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <vector>

namespace qx
{
namespace
{

constexpr std::size_t kMostTexts = 256;

struct scFailure
{
    DWORD thread;
    String text;
};

struct Failures
{
    clsCriticalSection lock{4000};
    std::vector<scFailure> entries; // the most recent one is the last

    auto Find(DWORD thread)
    {
        return std::find_if(
            entries.begin(), entries.end(), [thread](const scFailure& entry) { return entry.thread == thread; });
    }
};

Failures& TheFailures()
{
    static Failures& failures = MakeForever<Failures>();
    return failures;
}

} // namespace

void SetFailureText(const wchar_t* text) noexcept
try
{
    Failures& failures = TheFailures();
    const clsCriticalSectionLock held(failures.lock);
    const DWORD thread = GetCurrentThreadId();
    if (const auto known = failures.Find(thread); known != failures.entries.end())
        failures.entries.erase(known);
    else if (failures.entries.size() >= kMostTexts)
        failures.entries.erase(failures.entries.begin());
    failures.entries.push_back({thread, text});
}
catch (const std::exception&)
{
    // There is no memory for the text.
}

void SetFailureText(const char* text) noexcept
try
{
    SetFailureText(String(String::kFormatted, L"%hs", text).Text());
}
catch (const std::exception&)
{
    // There is no memory for the text, as above.
}

String FailureText()
{
    Failures& failures = TheFailures();
    const clsCriticalSectionLock held(failures.lock);
    const auto known = failures.Find(GetCurrentThreadId());
    return known == failures.entries.end() ? String() : known->text;
}

} // namespace qx
