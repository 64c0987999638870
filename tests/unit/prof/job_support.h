// Jobs and sources in memory.
#pragma once

#include "files/file.h"
#include "prof/job.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <objbase.h>

#include <memory>
#include <string>
#include <string_view>

namespace qxtest
{

struct ReleaseJob
{
    void operator()(qx::clsProfJob* job) const { job->Release(); }
};

using JobHolder = std::unique_ptr<qx::clsProfJob, ReleaseJob>;

inline JobHolder NewJob(qx::ProfMode mode = qx::ProfMode::Read, std::wstring_view root = L"/", uint32_t level = 0)
{
    return JobHolder(new qx::clsProfJob(mode, root, level));
}

class MemoryStream
{
public:
    explicit MemoryStream(std::string_view bytes = {})
    {
        EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, _stream.Receive()), S_OK);
        ULONG written = 0;
        _stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written);
        _stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr);
    }
    operator IStream*() const { return _stream.Get(); }

    std::string Bytes() const
    {
        STATSTG record = {};
        _stream->Stat(&record, STATFLAG_NONAME);
        std::string bytes(static_cast<size_t>(record.cbSize.QuadPart), '\0');
        _stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr);
        ULONG read = 0;
        _stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read);
        return bytes;
    }

private:
    qx::clsAutoRelease<IStream*> _stream;
};

inline std::string Bytes(std::wstring_view text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

// A tree in one line: leaves as "name=value;", lists as "[name]{...}".
inline void AppendTree(qx::String& text, const qx::clsItemList& list)
{
    for (const qx::clsItem* item : list)
    {
        if (item->List() != nullptr)
        {
            text += qx::String(qx::String::formatted, L"[%s]{", item->Name().Text());
            AppendTree(text, *item->List());
            text += L'}';
        }
        else
        {
            text += item->Name().Text();
            text += L'=';
            text += item->ValueText();
            text += L';';
        }
    }
}

inline qx::String Tree(const qx::clsItemList& list)
{
    qx::String text;
    AppendTree(text, list);
    return text;
}

} // namespace qxtest
