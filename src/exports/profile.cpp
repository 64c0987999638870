#include <qxut23/profile.h>

#include "core/debug_line.h"
#include "exports/guard.h"
#include "exports/profile_handle.h"
#include "prof/clipboard.h"
#include "prof/debug_list.h"
#include "prof/job.h"
#include "prof/path.h"
#include "prof/values.h"

#include <cstdint>
#include <cwchar>
#include <memory>
#include <string_view>

using namespace qx;

static_assert(PROF_ERR_CANNOT_READ == int{kProfCannotRead} && PROF_ERR_CANNOT_WRITE == int{kProfCannotWrite} &&
              PROF_ERR_WRITE_FAILED == int{kProfWriteFailed} && PROF_ERR_INVALID_JOB == int{kProfInvalidJob} &&
              PROF_ERR_NO_LEAF == int{kProfNoLeaf} && PROF_ERR_MALFORMED == int{kProfMalformed} &&
              PROF_ERR_STOPPED == int{kProfStopped} && PROF_ERR_NOT_THAT_TYPE == int{kProfNotOfThisType} &&
              PROF_ERR_LOCKED == int{kProfLocked});

namespace
{

struct ReleaseJob
{
    void operator()(clsProfJob* job) const { job->Release(); }
};

// Creates a job with the given constructor arguments and calls `open` on it.
template <class Open, class... Arguments>
HPROFJOB OpenJob(Open open, Arguments... arguments)
{
    return Guarded(HPROFJOB{},
        [&]
        {
            std::unique_ptr<clsProfJob, ReleaseJob> job(new clsProfJob(arguments...));
            open(*job);
            return HandleOf(job.release());
        });
}

} // namespace

// ---- Jobs

HPROFJOB ProfJobOpenW(const wchar_t* name)
{
    return OpenJob([name](clsProfJob& job) { job.Open(name); }, ProfMode::Read);
}

HPROFJOB ProfJobOpenExclusiveW(const wchar_t* name)
{
    return OpenJob([name](clsProfJob& job) { job.Open(name); }, ProfMode::Hold);
}

HPROFJOB ProfJobOpenStream(IStream* stream)
{
    return OpenJob([stream](clsProfJob& job) { job.OpenStream(stream); }, ProfMode::Hold);
}

HPROFJOB ProfJobOpenStreamObjectW(IStream* stream, const wchar_t* name, std::uint32_t level)
{
    return OpenJob([stream](clsProfJob& job) { job.OpenStream(stream); }, ProfMode::Hold,
        std::wstring_view(name != nullptr ? name : L""), level);
}

HPROFJOB ProfJobOpenClipboard(void* window)
{
    return OpenJob([window](clsProfJob& job) { job.OpenFromClipboard(static_cast<HWND>(window)); }, ProfMode::Read);
}

void ProfJobAddRef(HPROFJOB job)
{
    if (job != kInvalidJob)
        JobOf(job)->AddRef();
}

void ProfJobClose(HPROFJOB job)
{
    if (job != kInvalidJob)
        JobOf(job)->Release();
}

std::int32_t ProfGetError(HPROFJOB job)
{
    return job == kInvalidJob ? kProfInvalidJob : JobOf(job)->Error();
}

std::int32_t ProfSaveW(HPROFJOB job, const wchar_t* name, std::int32_t flags)
{
    if (job == kInvalidJob)
        return kProfOk;
    return Guarded(std::int32_t{kProfCannotWrite},
        [&] { return std::int32_t{JobOf(job)->Save(name, static_cast<unsigned>(flags))}; });
}

std::int32_t ProfSaveToStream(HPROFJOB job, IStream* stream, std::int32_t flags)
{
    if (job == kInvalidJob)
        return kProfOk;
    return Guarded(std::int32_t{kProfWriteFailed},
        [&] { return std::int32_t{JobOf(job)->Serialise(stream, static_cast<unsigned>(flags))}; });
}

std::int32_t ProfSaveToClipboard(HPROFJOB job, void* window, std::int32_t flags)
{
    if (job == kInvalidJob)
        return kProfOk;
    return Guarded(std::int32_t{kProfStopped}, [&]
        { return std::int32_t{JobOf(job)->SaveToClipboard(static_cast<HWND>(window), static_cast<unsigned>(flags))}; });
}

std::int32_t ProfIsClipboardDataAvailable()
{
    return Guarded(std::int32_t{0}, [] { return std::int32_t{IsProfileOnClipboard()}; });
}

std::int32_t ProfGetVersion(std::int32_t which)
{
    constexpr std::int32_t kMajor = 23;
    constexpr std::int32_t kMinor = 2;
    constexpr std::int32_t kVersion = 5890;
    switch (which)
    {
    case 0:
        return kVersion;
    case 1:
        return kMajor;
    case 2:
        return kMinor;
    default:
        return -1;
    }
}

std::int32_t ProfDebugList(HPROFJOB job, HPROFLIST list)
{
    if (job == kInvalidJob)
        return kProfInvalidJob;
    return Guarded(std::int32_t{kProfStopped},
        [&]
        {
            WriteDebugList(ListOf(job, list));
            return std::int32_t{kProfOk};
        });
}

void ProfSetDebug() {}

// ---- Lists

HPROFLIST ProfGetListW(HPROFJOB job, HPROFLIST list, const wchar_t* path)
{
    if (job == kInvalidJob)
        return nullptr;
    return Guarded(HPROFLIST{}, [&] { return HandleOf(FindListByPath(ListOf(job, list), path)); });
}

HPROFLIST ProfCreateListW(HPROFJOB job, HPROFLIST list, const wchar_t* path)
{
    if (job == kInvalidJob)
        return nullptr;
    return Guarded(HPROFLIST{}, [&] { return HandleOf(&CreateListByPath(ListOf(job, list), path)); });
}

HPROFLIST ProfAppendListW(HPROFJOB job, HPROFLIST list, const wchar_t* path)
{
    if (job == kInvalidJob)
        return nullptr;
    return Guarded(HPROFLIST{}, [&] { return HandleOf(&AppendListByPath(ListOf(job, list), path)); });
}

void ProfEmptyList(HPROFJOB job, HPROFLIST list)
{
    if (job != kInvalidJob)
        ListOf(job, list).RemoveAll();
}

void ProfDeleteListW(HPROFJOB job, HPROFLIST list, const wchar_t* path)
{
    if (job == kInvalidJob)
        return;
    Guarded(
        [&]
        {
            if (path != nullptr)
                RemoveByPath(ListOf(job, list), path, ItemKind::List);
            else
                RemoveList(JobOf(job)->Root(), ListOf(list));
        });
}

void ProfDeleteItemW(HPROFJOB job, HPROFLIST list, const wchar_t* path)
{
    if (job != kInvalidJob && path != nullptr)
        Guarded([&] { RemoveByPath(ListOf(job, list), path, ItemKind::Leaf); });
}

// Advances before each callback, because the callback may remove the entry it receives.
std::int32_t ProfEnumW(HPROFJOB job, HPROFLIST list, ProfEnumCallbackW callback, void* context)
{
    if (job == kInvalidJob || callback == nullptr)
        return 0;
    return Guarded(std::int32_t{0},
        [&]
        {
            for (WCValSListIter next(ListOf(job, list)); next;)
            {
                const clsItem& item = **next++;
                if (callback(job, item.Name().Text(), item.ValueText(), HandleOf(item.List()), context) == 0)
                    return 0;
            }
            return 1;
        });
}

std::int32_t ProfCopyList(HPROFJOB targetJob, HPROFLIST targetList, HPROFJOB sourceJob, HPROFLIST sourceList)
{
    if (targetJob == kInvalidJob || sourceJob == kInvalidJob)
        return kProfInvalidJob;
    return Guarded(std::int32_t{kProfStopped},
        [&]
        {
            JobOf(targetJob)->CopyItems(ListOf(targetJob, targetList), ListOf(sourceJob, sourceList));
            return std::int32_t{kProfOk};
        });
}

// ---- Values

std::int32_t ProfGetStringW(
    HPROFJOB job, HPROFLIST list, const wchar_t* path, wchar_t* buffer, std::int32_t size, const wchar_t* defaultValue)
{
    if (buffer != defaultValue)
        CopyToBuffer(defaultValue != nullptr ? defaultValue : L"", buffer, size);
    if (job == kInvalidJob)
        return 0;
    const clsItem* leaf = FindLeafByPath(ListOf(job, list), path);
    if (leaf == nullptr)
        return kProfNoLeaf;
    CopyToBuffer(leaf->Value(), buffer, size);
    return static_cast<std::int32_t>(leaf->Value().size());
}

std::int32_t ProfGetStringLengthW(HPROFJOB job, HPROFLIST list, const wchar_t* path)
{
    if (job == kInvalidJob)
        return 0;
    const clsItem* leaf = FindLeafByPath(ListOf(job, list), path);
    return leaf != nullptr ? static_cast<std::int32_t>(leaf->Value().size()) : std::int32_t{kProfNoLeaf};
}

void ProfSetStringW(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* value)
{
    if (job != kInvalidJob && path != nullptr && value != nullptr)
        Guarded([&] { SetLeafByPath(ListOf(job, list), path, value); });
}

void ProfAppendStringW(HPROFJOB job, HPROFLIST list, const wchar_t* path, const wchar_t* value)
{
    if (job != kInvalidJob && value != nullptr)
        Guarded([&] { AppendLeafByPath(ListOf(job, list), path, value); });
}
