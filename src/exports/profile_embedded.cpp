// Files and streams inside profiles.
#include <qxut23/profile.h>

#include "exports/guard.h"
#include "exports/narrow.h"
#include "exports/profile_handle.h"
#include "files/file.h"
#include "prof/embedded_files.h"
#include "prof/path.h"

#include <windows.h>

#include <objidl.h>

#include <cstdint>

using namespace qx;

namespace
{

// A file object on a stream that keeps the stream's current position. AttachStream would rewind it.
class clsRestOfStream : public clsFileRO
{
public:
    explicit clsRestOfStream(IStream* stream)
    {
        ULARGE_INTEGER position = {};
        if (stream == nullptr || FAILED(stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_CUR, &position)))
            return;
        AttachStream(stream);
        clsFile::Seek(static_cast<std::int64_t>(position.QuadPart));
    }
};

void AppendPacked(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* key, clsFile& source)
{
    AppendLeafByPath(ListOf(job, list), path, PackRest(source, key).View());
}

} // namespace

// Always takes ownership of the handle, so that the caller doesn't need to handle failures.
void ProfAppendFileW(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* key, void* fileHandle)
{
    Guarded(
        [&]
        {
            clsFileRO source(fileHandle);
            if (job != kInvalidJob)
                AppendPacked(job, list, path, key, source);
        });
}

void ProfAppendStreamW(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* key, IStream* stream)
{
    if (job == kInvalidJob)
        return;
    Guarded(
        [&]
        {
            clsRestOfStream source(stream);
            AppendPacked(job, list, path, key, source);
        });
}

std::int32_t ProfGetFileW(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* key, void* fileHandle)
{
    return Guarded(std::int32_t{kProfStopped},
        [&]
        {
            clsFileRW target(fileHandle);
            return job == kInvalidJob ? std::int32_t{kProfOk}
                                      : std::int32_t{UnpackLeafByPath(ListOf(job, list), path, key, target)};
        });
}

std::int32_t ProfGetStreamW(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* key, IStream* stream)
{
    if (job == kInvalidJob)
        return kProfOk;
    return Guarded(std::int32_t{kProfStopped},
        [&]
        {
            clsFileRW target(stream);
            return std::int32_t{UnpackLeafByPath(ListOf(job, list), path, key, target)};
        });
}

std::int32_t ProfAppendFilesW(HPROFJOB job, HPROFLIST list, const wchar_t* pattern, const wchar_t* key)
{
    if (job == kInvalidJob)
        return 0;
    return Guarded(std::int32_t{kProfStopped}, [&] { return AppendFiles(ListOf(job, list), pattern, key); });
}

std::int32_t ProfExtractFilesW(HPROFJOB job, HPROFLIST list, const wchar_t* directory, const wchar_t* key)
{
    if (job == kInvalidJob)
        return 0;
    return Guarded(std::int32_t{kProfStopped}, [&] { return ExtractFiles(ListOf(job, list), directory, key); });
}

void ProfAppendFileA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, void* fileHandle)
{
    NarrowForm<ProfAppendFileW>::Call(job, list, path, key, fileHandle);
}

void ProfAppendStreamA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, IStream* stream)
{
    NarrowForm<ProfAppendStreamW>::Call(job, list, path, key, stream);
}

std::int32_t ProfGetFileA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, void* fileHandle)
{
    return NarrowForm<ProfGetFileW, PROF_ERR_STOPPED>::Call(job, list, path, key, fileHandle);
}

std::int32_t ProfGetStreamA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, IStream* stream)
{
    return NarrowForm<ProfGetStreamW, PROF_ERR_STOPPED>::Call(job, list, path, key, stream);
}

std::int32_t ProfAppendFilesA(HPROFJOB job, HPROFLIST list, const char* pattern, const char* key)
{
    return NarrowForm<ProfAppendFilesW, PROF_ERR_STOPPED>::Call(job, list, pattern, key);
}

std::int32_t ProfExtractFilesA(HPROFJOB job, HPROFLIST list, const char* directory, const char* key)
{
    return NarrowForm<ProfExtractFilesW, PROF_ERR_STOPPED>::Call(job, list, directory, key);
}
