// The second process of a test: this program, started with other arguments.
#pragma once

#include "system_support.h"

#include <memory>

namespace qxtest
{

// Runs the role given by the first argument. Ends when the role is done or when the first process signals it to end.
int RunPeer(int count, char** arguments);

class Peer
{
public:
    Peer(const Folder& folder, const char* task, const Text& path, DWORD first, DWORD second);
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer();

    // Returns true once the other process is ready.
    bool WaitUntilReady();

    // Signals the other process to end and returns its exit code.
    DWORD Finish();

    DWORD Kill(DWORD exitCode);

private:
    DWORD WaitForEnd();

    Text _signal; // the common prefix of the two files through which the processes communicate
    PROCESS_INFORMATION _process{};
};

} // namespace qxtest
