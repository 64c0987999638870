#include "threads/temp_file_remover.h"

#include "core/debug_line.h"
#include "core/developer_run.h"
#include "core/ticks.h"
#include "files/file.h"
#include "files/file_time.h"
#include "files/path_separator.h"
#include "files/paths.h"
#include "files/temp_file_removal.h"
#include "files/temp_files.h"
#include "threads/activity_note.h"

#include <algorithm>

namespace qx
{
namespace
{

constexpr DWORD kEndPatience = 10'000;
constexpr DWORD kLongestPause = 10'000;
constexpr DWORD kShorterForEachFile = 100;
constexpr std::size_t kFilesForTheShortestPause = 90;
constexpr unsigned long long kBudgetOfAFile = 10; // milliseconds, on average
constexpr unsigned long long kSweepInterval = 86'400'000;
constexpr std::uint64_t kActiveFor = 3 * kUnitsPerHour;
constexpr std::uint64_t kRestAfterWrite = 10 * kUnitsPerSecond;

// Returns false and sets the last error if the time can't be read.
bool LastWriteOf(const String& name, std::uint64_t& time)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExW(name, GetFileExInfoStandard, &data))
        return false;
    time = UnitsOf(data.ftLastWriteTime);
    return true;
}

} // namespace

unsigned long long TempFileClock::Ticks() const
{
    return UtilGetTicks();
}

FILETIME TempFileClock::UtcNow() const
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return now;
}

const TempFileClock& TempFileClock::OfSystem()
{
    static const TempFileClock clock;
    return clock;
}

clsTempFileRemover::clsTempFileRemover(const TempFileClock& clock) : clsThreadBase(L"clsTempFileRemover"), _clock(clock)
{
    const String folder = GetTempSubfolder();
    if (GetFileAttributesW(folder) != INVALID_FILE_ATTRIBUTES)
        Start();
    else
        DebugLine(L"WRN: UTIL: path '%s' does not exist", folder.Text());
}

clsTempFileRemover::~clsTempFileRemover()
{
    ThreadEnd(false, kEndPatience, true);
    // Doesn't take the lock, because a terminated thread may have left it locked.
    for (const IString& name : _files)
    {
        if (DeleteFileW(name))
            continue;
        if (GetLastError() == ERROR_FILE_NOT_FOUND)
            DebugLine(L"temp file '%s' is gone!", name.Text());
        else
            DebugLine(L"cannot delete '%s', file will most likely remain on your system", name.Text());
    }
}

void clsTempFileRemover::Add(const wchar_t* name)
{
    const clsCriticalSectionLock lock(_lock);
    _files.Append(name);
    Start();
}

// If the thread can't be started, the next file tries again.
void clsTempFileRemover::Start()
{
    if (_started)
        return;
    _signalFile.Format(
        L"%s%c_%d_activity%s", GetTempSubfolder().Text(), PATH_SEPARATOR, kTempNameVersion, kActivityExtension);
    _started = ThreadStart(THREAD_PRIORITY_NORMAL);
}

unsigned clsTempFileRemover::ThreadProc()
{
    DWORD pause = kLongestPause;
    int result = 0;
    while (WaitForEvents(_clock.Wait(pause), result, 0))
    {
        if (result == kWaitFailed) // without its event the thread would neither pause nor end
            return 1;
        pause = Round();
    }
    return 0;
}

DWORD clsTempFileRemover::Round()
{
    const unsigned long long ticks = _clock.Ticks();
    const FILETIME now = _clock.UtcNow();
    if (!_signalFile.IsEmpty() && !IsTempSubfolderForeign())
    {
        if (ticks >= _nextSweep)
        {
            if (!IsSomebodyActive(UnitsOf(now)))
                SweepTempFiles(_signalFile, now);
            _nextSweep = ticks + kSweepInterval;
        }
        TouchActivityFile(now);
    }
    const clsCriticalSectionLock lock(_lock);
    RemoveFiles(UnitsOf(now));
    return kLongestPause -
           kShorterForEachFile * static_cast<DWORD>(std::min(_files.Count(), kFilesForTheShortestPause));
}

bool clsTempFileRemover::IsSomebodyActive(std::uint64_t now) const
{
    std::uint64_t touched = 0;
    return LastWriteOf(_signalFile, touched) && touched + kActiveFor >= now;
}

void clsTempFileRemover::TouchActivityFile(const FILETIME& now) const
{
    clsFileRW file(OpenActivityFile(GetPathName(_signalFile)));
    if (!file.IsOpen())
    {
        const String reason = String::SystemErrorText(GetLastError());
        DebugLine(L"cannot create/open activity file '%s': %s", _signalFile.Text(), reason.Text());
        return;
    }
    SYSTEMTIME time{};
    FileTimeToSystemTime(&now, &time);
    const String note = ActivityNote(time);
    file.clsFile::Write(note.Text(), note.Length() * sizeof(wchar_t), 0);
}

void clsTempFileRemover::RemoveFiles(std::uint64_t now)
{
    const unsigned long long end = _clock.Ticks() + kBudgetOfAFile * _files.Count();
    bool isInTime = true;
    _files.RemoveIf(
        [&](const IString& name)
        {
            isInTime = isInTime && _clock.Ticks() < end;
            return isInTime && TryToRemove(name, now);
        });
}

// Returns true if the file needs no further attempts.
bool clsTempFileRemover::TryToRemove(const IString& name, std::uint64_t now) const
{
    std::uint64_t written = 0;
    if (!LastWriteOf(name, written))
        return GetLastError() == ERROR_FILE_NOT_FOUND || GetLastError() == ERROR_PATH_NOT_FOUND;
    if (written + kRestAfterWrite > now)
        return false;
    if (RemoveFile(name) != Removal::Failed)
        return true;
    if (UtilIsDeveloperRun())
        DebugLine(L" ...trying again later");
    return false;
}

} // namespace qx
