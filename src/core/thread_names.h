// The names of the library's threads, as the debug lines show them.
#pragma once

#include "containers/skip_list.h"
#include "core/critical_section.h"

namespace qx
{

class ThreadNames
{
public:
    // The text is borrowed until it is removed. A thread that reused the id of one that was never removed takes over.
    void Enter(unsigned threadId, const char* name);
    // Only if it is that very text that stands there.
    void Remove(unsigned threadId, const char* name);
    // Null for a thread without a name. A thread that asks for its own may use the text until it ends.
    const char* Find(unsigned threadId);

private:
    clsCriticalSection _outerLock; // taken first
    clsCriticalSection _innerLock; // guards the dictionary
    WCValSkipListDict<unsigned, const char*> _names;
};

// Lives as long as the process.
ThreadNames& TheThreadNames();

} // namespace qx
