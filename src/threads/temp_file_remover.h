// The thread that gets rid of temporary files.
#pragma once

#include "core/critical_section.h"
#include "core/text/string.h"
#include "threads/thread_base.h"

namespace qx
{

// What the remover knows of time. Tests have one of their own, whose hours pass in no time.
class TempFileClock
{
public:
    virtual ~TempFileClock() = default;

    virtual unsigned long long Ticks() const;
    virtual FILETIME UtcNow() const;
    // How long the thread really waits when it is to wait for so long.
    virtual DWORD Wait(DWORD milliseconds) const { return milliseconds; }

    static const TempFileClock& OfSystem();
};

// Deletes files once nothing holds them, and once a day what other processes left in the library's temp folder.
//
// Processes stay out of each other's way without talking to each other: each touches the activity file in every round,
// and none sweeps while that was touched in the last three hours. So the first process after a quiet spell sweeps.
class clsTempFileRemover final : public clsThreadBase
{
public:
    explicit clsTempFileRemover(const TempFileClock& clock = TempFileClock::OfSystem());
    // Ends the thread, and tries the files that are left one last time.
    ~clsTempFileRemover() override;

    void Add(const wchar_t* name);

    unsigned ThreadProc() override;

    // What the thread does again and again; gives the milliseconds to wait before the next round.
    DWORD Round();

private:
    void Start();
    bool IsSomebodyActive(std::uint64_t now) const;
    void TouchActivityFile(const FILETIME& now) const;
    void RemoveFiles(std::uint64_t now);
    bool TryToRemove(const IString& name, std::uint64_t now) const;

    const TempFileClock& _clock;
    clsCriticalSection _lock;   // the files, and the start of the thread
    WCValSList<IString> _files; // still to be deleted, in the order in which they came
    unsigned long long _nextSweep = 0;
    String _signalFile; // set before the thread starts; empty until then
    bool _started = false;
};

} // namespace qx
