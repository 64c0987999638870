// The names of the library's threads, as shown in debug lines.
#pragma once

#include "containers/skip_list.h"
#include "core/critical_section.h"

namespace qx
{

class ThreadNames
{
public:
    // Registers a name. The text must remain valid until it is removed. If the id of an earlier thread was reused
    // without removal, the new name replaces the old one.
    void Enter(unsigned threadId, const char* name);
    // Removes the name, but only if the registered pointer is `name`.
    void Remove(unsigned threadId, const char* name);
    // Returns null for a thread without a name. A thread that looks up its own name may use the text until the thread
    // ends.
    const char* Find(unsigned threadId);

private:
    clsCriticalSection _outerLock; // acquired first
    clsCriticalSection _innerLock; // guards the dictionary
    WCValSkipListDict<unsigned, const char*> _names;
};

// Returns the one table of names, which lives until the process ends.
ThreadNames& TheThreadNames();

} // namespace qx
