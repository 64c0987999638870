// Reads a document on a network share.
#pragma once

#include "core/critical_section.h"
#include "docinfo/document_record.h"
#include "files/auto_release.h"
#include "threads/thread_base.h"

#include <cstdint>

namespace qx
{

// The function that reads a record: ReadDocument, or a function of a test.
using DocumentReading = void (*)(clsDocu& record, std::uint64_t readBefore, clsCriticalSection* section);

// Replaces the reading function of new readers, for tests. Null restores ReadDocument.
void SetShareReading(DocumentReading reading);

// Reads one record on a thread of its own, because a dead share may block it for minutes. It reads into a private copy,
// so that it can continue after the caller has stopped waiting.
class clsDocuAsync : public clsThreadBase
{
public:
    // `readBefore` is the tick of the refresh before this one. The caller holds the record's section.
    clsDocuAsync(clsDocu& record, std::uint64_t readBefore);
    // Waits for the thread.
    ~clsDocuAsync() override;

    // Starts the thread and waits for it, at most for the record's time-out. Returns true if it has ended; the results
    // can be taken then.
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
