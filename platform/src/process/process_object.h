// A process: this one or a child.
#pragma once

#include "threads/waitable.h"

#include <sys/types.h>

namespace qxplatform
{

class ProcessObject : public Waitable
{
public:
    static constexpr ObjectType kObjectType = ObjectType::Process;

    explicit ProcessObject(pid_t processId) : Waitable(kObjectType), id(processId) {}

    // Starts a thread that waits for the child to end.
    static void Watch(const Ref<ProcessObject>& child);

    bool IsSignalled() const override { return _hasEnded; }
    DWORD ExitCode() const;

    // Ends the process with the given exit code.
    BOOL Terminate(DWORD exitCode);

    const pid_t id;

private:
    void WaitForEnd();

    bool _hasEnded = false;
    DWORD _exitCode = 0;
    DWORD _terminationCode = 0;
};

} // namespace qxplatform
