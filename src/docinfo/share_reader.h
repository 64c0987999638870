// Reads a document on a network share.
#pragma once

#include "core/critical_section.h"
#include "docinfo/document_record.h"
#include "files/auto_release.h"
#include "threads/thread_base.h"

#include <cstdint>

namespace qx
{

// Reads a record: ReadDocument, or a function of a test.
using DocumentReading = void (*)(clsDocu& record, std::uint64_t readBefore, clsCriticalSection* section);

// Replaces the reading function of new readers, for tests. Null restores ReadDocument.
void SetShareReading(DocumentReading reading);

// Reads one record on a thread of its own, because a dead share may block it for minutes. It reads into a private copy,
// so that it may outlive its caller's patience.
class clsDocuAsync : public clsThreadBase
{
public:
    // `readBefore` is the tick of the refresh before this one. Both are called with the record's section held.
    clsDocuAsync(clsDocu& record, std::uint64_t readBefore);
    // Waits for the thread.
    ~clsDocuAsync() override;

    // Starts the thread, waits for it as long as the record's time-out says, and returns true if it has ended. Then the
    // results can be taken.
    bool Run();
    // Copies the results to the record, whose section the caller holds.
    void GiveResults();

    bool HasEnded();

    unsigned ThreadProc() override;
    unsigned GetStackSize() const override;

private:
    clsCriticalSection _section; // held by the thread from its first write to the copy
    const std::uint32_t _timeout;
    const std::uint64_t _readBefore;
    clsAutoRelease<clsDocu*> _record;
    clsAutoRelease<clsDocu*> _copy;
};

} // namespace qx
