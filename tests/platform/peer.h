// The second process of a test: this program, started with other arguments.
#pragma once

#include "system_support.h"

namespace qxtest
{

// Returns the file that the other process creates when it holds its lock.
inline Text ReadyFile(const Text& path)
{
    return path + L".ready";
}

// Returns the name of the mapping that a test process and its second process share.
inline Text MappingName(DWORD testProcess)
{
    return Text::Widen("qxtest-mapping-" + std::to_string(testProcess));
}

class Peer
{
public:
    Peer(const char* task, const Text& path, DWORD first, DWORD second) : _ready(ReadyFile(path))
    {
        DeleteFileW(_ready);
        WCHAR program[1000] = {};
        GetModuleFileNameW(nullptr, program, 1000);
        Text line = Text(L"\"") + program + L"\" --peer " + Text::Widen(task) + L" \"" + path + L"\" " +
                    Text::Widen(std::to_string(first) + " " + std::to_string(second));
        STARTUPINFOW info{};
        info.cb = sizeof info;
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &info, &process))
            << GetLastError();
        CloseHandle(process.hThread);
        _process = Handle(process.hProcess);
    }
    ~Peer() { TerminateProcess(_process, 1); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    // Returns true once the other process holds its lock.
    bool WaitUntilReady() const
    {
        for (const ULONGLONG end = GetTickCount64() + 20'000; GetTickCount64() < end; Sleep(2))
            if (Exists(_ready))
                return true;
        return false;
    }

    // These return the exit code.
    DWORD Kill(DWORD exitCode) const
    {
        EXPECT_TRUE(TerminateProcess(_process, exitCode));
        return WaitForEnd();
    }
    DWORD WaitForEnd() const
    {
        DWORD code = 0;
        EXPECT_EQ(WaitForSingleObject(_process, 60'000), DWORD{WAIT_OBJECT_0});
        EXPECT_TRUE(GetExitCodeProcess(_process, &code));
        return code;
    }

private:
    const Text _ready;
    Handle _process;
};

} // namespace qxtest
