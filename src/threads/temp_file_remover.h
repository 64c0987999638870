// The thread that deletes temporary files.
#pragma once

#include "core/critical_section.h"
#include "core/text/string.h"
#include "threads/thread_base.h"

namespace qx
{

// The remover's source of time. Tests replace it by a clock in which hours pass immediately.
class TempFileClock
{
public:
    virtual ~TempFileClock() = default;

    virtual unsigned long long Ticks() const;
    virtual FILETIME UtcNow() const;
    // Returns the time-out, in milliseconds, for a pause of this length. Doesn't wait itself. Tests shorten pauses.
    virtual DWORD Wait(DWORD milliseconds) const { return milliseconds; }

    static const TempFileClock& OfSystem();
};

// Deletes files as soon as they are no longer in use. Once a day, deletes files that other processes left in the
// library's temp folder.
//
// Processes coordinate without communicating: each one touches the activity file in every round, and none sweeps if the
// file was touched within the last three hours. The first process after a quiet period therefore sweeps.
class clsTempFileRemover final : public clsThreadBase
{
public:
    explicit clsTempFileRemover(const TempFileClock& clock = TempFileClock::OfSystem());
    // Ends the thread and tries once more to delete the remaining files.
    ~clsTempFileRemover() override;

    void Add(const wchar_t* name);

    unsigned ThreadProc() override;

    // Does the periodic work of the thread. Returns the pause before the next round in milliseconds.
    DWORD Round();

private:
    void Start();
    bool IsSomebodyActive(std::uint64_t now) const;
    void TouchActivityFile(const FILETIME& now) const;
    void RemoveFiles(std::uint64_t now);
    bool TryToRemove(const IString& name, std::uint64_t now) const;

    const TempFileClock& _clock;
    clsCriticalSection _lock;   // protects the files and the start of the thread
    WCValSList<IString> _files; // files to delete, in insertion order
    unsigned long long _nextSweep = 0;
    String _signalFile; // set before the thread starts, empty until then
    bool _started = false;
};

} // namespace qx
