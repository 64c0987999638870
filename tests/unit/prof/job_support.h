// Jobs in memory, and trees as text.
#pragma once

#include "files/file.h"
#include "prof/job.h"
#include "support/memory_stream.h"

#include <cstdint>
#include <memory>

namespace qxtest
{

struct ReleaseJob
{
    void operator()(qx::clsProfJob* job) const { job->Release(); }
};

using JobHolder = std::unique_ptr<qx::clsProfJob, ReleaseJob>;

inline JobHolder NewJob(qx::ProfMode mode = qx::ProfMode::Read, std::wstring_view root = L"/", std::uint32_t level = 0)
{
    return JobHolder(new qx::clsProfJob(mode, root, level));
}

inline std::string Bytes(std::wstring_view text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

// Returns a tree as one line: leaves as "name=value;", lists as "[name]{...}".
inline qx::String Tree(const qx::clsItemList& list)
{
    qx::String text;
    for (const qx::clsItem* item : list)
        text += item->List() != nullptr ? qx::String(L"[") + item->Name().Text() + L"]{" + Tree(*item->List()) + L"}"
                                        : qx::String(item->Name().Text()) + L"=" + item->ValueText() + L";";
    return text;
}

} // namespace qxtest
