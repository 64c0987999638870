#include "core/thread_names.h"

#include "core/forever.h"

namespace qx
{

void ThreadNames::Enter(unsigned threadId, const char* name)
{
    const clsCriticalSectionLock outer(_outerLock);
    const clsCriticalSectionLock inner(_innerLock);
    _names[threadId] = name;
}

void ThreadNames::Remove(unsigned threadId, const char* name)
{
    const clsCriticalSectionLock outer(_outerLock);
    const clsCriticalSectionLock inner(_innerLock);
    const char* const* const found = _names.Find(threadId);
    if (found && *found == name)
        _names.Remove(threadId);
}

const char* ThreadNames::Find(unsigned threadId)
{
    const clsCriticalSectionLock outer(_outerLock);
    const clsCriticalSectionLock inner(_innerLock);
    const char* const* const found = _names.Find(threadId);
    return found ? *found : nullptr;
}

ThreadNames& TheThreadNames()
{
    static ThreadNames& names = MakeForever<ThreadNames>();
    return names;
}

} // namespace qx
