// Files and streams inside profiles.
#include <qxut23/profile.h>
#include <qxut23/profile_files.h>

#include "core/packing/pass_phrase.h"
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

static_assert(QXUT_FILE_NO_NAME == static_cast<int>(EntryProblem::NoName) &&
              QXUT_FILE_NAME_REFUSED == static_cast<int>(EntryProblem::NameRefused) &&
              QXUT_FILE_NO_CONTENTS == static_cast<int>(EntryProblem::NoContents) &&
              QXUT_FILE_WRONG_KEY == static_cast<int>(EntryProblem::WrongKey) &&
              QXUT_FILE_DAMAGED == static_cast<int>(EntryProblem::Damaged) &&
              QXUT_FILE_CANNOT_WRITE == static_cast<int>(EntryProblem::CannotWrite));

void AppendPacked(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* key, clsFile& source)
{
    AppendLeafByPath(ListOf(job, list), path, PackRest(source, clsPassPhrase(key).Text()).View());
}

// The implementations of the exports. The key is a scSecretText, so that the 8-bit forms erase the converted key.

// Always takes ownership of the handle, so that the caller doesn't need to handle failures.
void AppendFile(HPROFJOB job, HPROFLIST list, const wchar_t* path, scSecretText key, void* fileHandle)
{
    Guarded(
        [&]
        {
            clsFileRO source(fileHandle);
            if (job != kInvalidJob)
                AppendPacked(job, list, path, key.text, source);
        });
}

void AppendStream(HPROFJOB job, HPROFLIST list, const wchar_t* path, scSecretText key, IStream* stream)
{
    if (job == kInvalidJob)
        return;
    Guarded(
        [&]
        {
            clsRestOfStream source(stream);
            AppendPacked(job, list, path, key.text, source);
        });
}

std::int32_t GetFile(HPROFJOB job, HPROFLIST list, const wchar_t* path, scSecretText key, void* fileHandle)
{
    return Guarded(std::int32_t{kProfStopped},
        [&]
        {
            clsFileRW target(fileHandle);
            if (job == kInvalidJob)
                return std::int32_t{kProfOk};
            return std::int32_t{UnpackLeafByPath(ListOf(job, list), path, clsPassPhrase(key.text).Text(), target)};
        });
}

std::int32_t GetStream(HPROFJOB job, HPROFLIST list, const wchar_t* path, scSecretText key, IStream* stream)
{
    if (job == kInvalidJob)
        return kProfOk;
    return Guarded(std::int32_t{kProfStopped},
        [&]
        {
            clsFileRW target(stream);
            return std::int32_t{UnpackLeafByPath(ListOf(job, list), path, clsPassPhrase(key.text).Text(), target)};
        });
}

std::int32_t AppendFilesOf(HPROFJOB job, HPROFLIST list, const wchar_t* pattern, scSecretText key)
{
    if (job == kInvalidJob)
        return 0;
    return Guarded(std::int32_t{kProfStopped},
        [&] { return AppendFiles(ListOf(job, list), pattern, clsPassPhrase(key.text).Text()); });
}

std::int32_t ExtractFilesOf(HPROFJOB job, HPROFLIST list, const wchar_t* directory, scSecretText key)
{
    if (job == kInvalidJob)
        return 0;
    return Guarded(std::int32_t{kProfStopped},
        [&] { return ExtractFiles(ListOf(job, list), directory, clsPassPhrase(key.text).Text()); });
}

} // namespace

void ProfAppendFileW(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* key, void* fileHandle)
{
    AppendFile(job, list, path, {key}, fileHandle);
}

void ProfAppendStreamW(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* key, IStream* stream)
{
    AppendStream(job, list, path, {key}, stream);
}

std::int32_t ProfGetFileW(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* key, void* fileHandle)
{
    return GetFile(job, list, path, {key}, fileHandle);
}

std::int32_t ProfGetStreamW(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* key, IStream* stream)
{
    return GetStream(job, list, path, {key}, stream);
}

std::int32_t ProfAppendFilesW(HPROFJOB job, HPROFLIST list, const wchar_t* pattern, const wchar_t* key)
{
    return AppendFilesOf(job, list, pattern, {key});
}

std::int32_t ProfExtractFilesW(HPROFJOB job, HPROFLIST list, const wchar_t* directory, const wchar_t* key)
{
    return ExtractFilesOf(job, list, directory, {key});
}

std::int32_t QxProfExtractFiles(
    HPROFJOB job, HPROFLIST list, const wchar_t* directory, const wchar_t* key, QxFileProblem problem, void* context)
{
    if (job == kInvalidJob)
        return 0;
    return Guarded(std::int32_t{kProfStopped},
        [&]
        {
            ReportEntry report;
            if (problem != nullptr)
                report = [=](const String& name, EntryProblem reason, const wchar_t* description)
                {
                    problem(context, name, static_cast<std::int32_t>(reason), description);
                };
            return ExtractFiles(ListOf(job, list), directory, clsPassPhrase(key).Text(), Unpacking::Strict, report);
        });
}

void ProfAppendFileA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, void* fileHandle)
{
    NarrowForm<AppendFile>::Call(job, list, path, key, fileHandle);
}

void ProfAppendStreamA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, IStream* stream)
{
    NarrowForm<AppendStream>::Call(job, list, path, key, stream);
}

std::int32_t ProfGetFileA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, void* fileHandle)
{
    return NarrowForm<GetFile, PROF_ERR_STOPPED>::Call(job, list, path, key, fileHandle);
}

std::int32_t ProfGetStreamA(HPROFJOB job, HPROFLIST list, const char* path, const char* key, IStream* stream)
{
    return NarrowForm<GetStream, PROF_ERR_STOPPED>::Call(job, list, path, key, stream);
}

std::int32_t ProfAppendFilesA(HPROFJOB job, HPROFLIST list, const char* pattern, const char* key)
{
    return NarrowForm<AppendFilesOf, PROF_ERR_STOPPED>::Call(job, list, pattern, key);
}

std::int32_t ProfExtractFilesA(HPROFJOB job, HPROFLIST list, const char* directory, const char* key)
{
    return NarrowForm<ExtractFilesOf, PROF_ERR_STOPPED>::Call(job, list, directory, key);
}
