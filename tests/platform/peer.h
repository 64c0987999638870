// The second process of a test: this same program, started with other arguments.
#pragma once

#include "system_support.h"

#include <memory>

namespace qxtest
{

// What the second process does, as its first argument tells; each ends when the first one says so, or when done.
int RunPeer(int count, char** arguments);

class Peer
{
public:
    Peer(const Folder& folder, const char* task, const Text& path, DWORD first, DWORD second);
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer();

    // True once the other process has done what it is to hold.
    bool WaitUntilReady();

    // Tells the other process to end, and gives its exit code.
    DWORD Finish();

    DWORD Kill(DWORD exitCode);

    HANDLE process() const { return _process.hProcess; }

private:
    DWORD WaitForEnd();

    Text _signal; // the common part of the names of two files by which the processes talk
    PROCESS_INFORMATION _process{};
};

} // namespace qxtest
