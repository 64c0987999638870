// What the loader makes of any bytes: whatever tree comes out can be written, and what was written comes back as it is.
#include "files/file.h"
#include "prof/job.h"

#include <windows.h>

#include <objbase.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace qx;

namespace
{

struct ReleaseJob
{
    void operator()(clsProfJob* job) const { job->Release(); }
};
using JobHolder = std::unique_ptr<clsProfJob, ReleaseJob>;

// A stream object's root has a name of its own, and its source no mark.
JobHolder NewJob(bool isStreamObject)
{
    return JobHolder(isStreamObject ? new clsProfJob(ProfMode::Hold, L"object", 2) : new clsProfJob(ProfMode::Read));
}

clsAutoRelease<IStream*> NewStream(const uint8_t* data, size_t size)
{
    clsAutoRelease<IStream*> stream;
    if (CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive()) != S_OK)
        std::abort();
    ULONG written = 0;
    stream->Write(data, static_cast<ULONG>(size), &written);
    return stream;
}

void Load(clsProfJob& job, IStream* stream)
{
    clsFileRO file(stream);
    job.Load(file);
}

std::vector<uint8_t> Saved(clsProfJob& job)
{
    const clsAutoRelease<IStream*> stream = NewStream(nullptr, 0);
    if (job.Serialise(stream.Get(), 0) != kProfOk)
        std::abort();
    clsFileRO file(stream.Get());
    std::vector<uint8_t> bytes(static_cast<size_t>(file.GetSize()));
    file.clsFile::Read(bytes.data(), static_cast<uint32_t>(bytes.size()));
    return bytes;
}

std::vector<uint8_t> SavedAfterLoad(const uint8_t* data, size_t size, bool isStreamObject)
{
    const JobHolder job = NewJob(isStreamObject);
    Load(*job, NewStream(data, size).Get());
    return Saved(*job);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::vector<uint8_t> once = SavedAfterLoad(data, size, false);
    if (SavedAfterLoad(once.data(), once.size(), false) != once)
        std::abort();
    // A stream object comes back one list deeper, so there is nothing to compare with.
    SavedAfterLoad(data, size, true);
    return 0;
}
