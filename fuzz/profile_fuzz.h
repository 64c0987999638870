// Helpers shared by the fuzz targets of the profile store: jobs on streams in memory.
#pragma once

#include "files/file.h"
#include "prof/job.h"

#include <windows.h>

#include <objbase.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

namespace profilefuzz
{

using Bytes = std::vector<std::uint8_t>;

struct ReleaseJob
{
    void operator()(qx::clsProfJob* job) const { job->Release(); }
};
using JobHolder = std::unique_ptr<qx::clsProfJob, ReleaseJob>;

inline JobHolder NewJob()
{
    return JobHolder(new qx::clsProfJob(qx::ProfMode::Read));
}

// Returns a job for a stream object. Its root has the object's name, and its source is read as UTF-16LE even without a
// byte order mark.
inline JobHolder NewStreamObject()
{
    return JobHolder(new qx::clsProfJob(qx::ProfMode::Hold, L"object", 2));
}

inline qx::clsAutoRelease<IStream*> NewStream(const std::uint8_t* data, std::size_t size)
{
    qx::clsAutoRelease<IStream*> stream;
    if (CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive()) != S_OK)
        std::abort();
    ULONG written = 0;
    stream->Write(data, static_cast<ULONG>(size), &written);
    return stream;
}

inline bool Load(qx::clsProfJob& job, const Bytes& bytes)
{
    qx::clsFileRO file(NewStream(bytes.data(), bytes.size()).Get());
    return job.Load(file);
}

inline Bytes Saved(qx::clsProfJob& job, qx::ProfForm form, unsigned packing = 0)
{
    const qx::clsAutoRelease<IStream*> stream = NewStream(nullptr, 0);
    if (job.Serialise(stream.Get(), static_cast<unsigned>(form) | packing) != qx::kProfOk)
        std::abort();
    qx::clsFileRO file(stream.Get());
    Bytes bytes(static_cast<std::size_t>(file.GetSize()));
    file.clsFile::Read(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return bytes;
}

// Loads and saves again. The library must be able to load what it has written.
inline Bytes SavedAgain(const Bytes& saved, qx::ProfForm form)
{
    const JobHolder job = NewJob();
    if (!saved.empty() && !Load(*job, saved))
        std::abort();
    return Saved(*job, form);
}

} // namespace profilefuzz
