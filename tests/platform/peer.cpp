#include "peer.h"

#include <cstdlib>
#include <string>

namespace qxtest
{
namespace
{

constexpr DWORD kPatience = 20'000;

bool WaitForFile(const Text& path, HANDLE process = nullptr)
{
    for (const ULONGLONG end = GetTickCount64() + kPatience; GetTickCount64() < end; Sleep(2))
    {
        if (Exists(path))
            return true;
        if (process != nullptr && WaitForSingleObject(process, 0) == WAIT_OBJECT_0)
            return false;
    }
    return false;
}

Text ReadyFile(const Text& signal)
{
    return signal + L".ready";
}

Text EndFile(const Text& signal)
{
    return signal + L".end";
}

// Signals that this process is ready, and waits until the other process allows it to end.
int Hold(const Text& signal)
{
    MakeFile(ReadyFile(signal));
    return WaitForFile(EndFile(signal)) ? 0 : 3;
}

// Adds one to the number in the file, under the protection that the caller has established.
void Increment(HANDLE file)
{
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    const std::string next = std::to_string(std::atoi(ReadBytes(file, 20).c_str()) + 1);
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    WriteBytes(file, next);
}

// Each round is protected either by opening the file exclusively, or by a lock next to the number, taken through a
// separate handle so that it needs no write access.
int Count(const Text& path, bool byLock, DWORD access, DWORD rounds)
{
    const DWORD refusal = byLock ? ERROR_LOCK_VIOLATION : ERROR_SHARING_VIOLATION;
    const Handle lock = byLock ? Open(path, access, kShareAll) : Handle();
    const ULONGLONG end = GetTickCount64() + kPatience;
    for (DWORD round = 0; round < rounds;)
    {
        if (GetTickCount64() > end)
            return 4;
        const Handle file = Open(path, GENERIC_READ | GENERIC_WRITE, byLock ? kShareAll : 0);
        if (byLock ? LockFile(lock, 100, 0, 1, 0) : static_cast<bool>(file))
        {
            Increment(file);
            if (byLock && !UnlockFile(lock, 100, 0, 1, 0))
                return 6;
            ++round;
        }
        else if (GetLastError() != refusal)
            return 5;
        else
            Sleep(0);
    }
    return 0;
}

} // namespace

int RunPeer(int count, char** arguments)
{
    if (count < 5)
        return 2;
    const std::string task = arguments[0];
    const Text signal = Text::Widen(arguments[1]);
    const Text path = Text::Widen(arguments[2]);
    const DWORD first = static_cast<DWORD>(std::strtoul(arguments[3], nullptr, 10));
    const DWORD second = static_cast<DWORD>(std::strtoul(arguments[4], nullptr, 10));
    if (task == "count" || task == "countlocked")
        return Count(path, task == "countlocked", first, second);

    const Handle file = Open(path, first, second);
    if (!file || !LockFile(file, 2, 0, 3, 0))
        return 7;
    return Hold(signal);
}

Peer::Peer(const Folder& folder, const char* task, const Text& path, DWORD first, DWORD second)
{
    static int number = 0;
    _signal = folder / Text::Widen("signal" + std::to_string(++number));
    WCHAR program[1000] = {};
    GetModuleFileNameW(nullptr, program, 1000);
    Text line = Text(L"\"") + program + L"\" --peer " + Text::Widen(task) + L" \"" + _signal + L"\" \"" + path +
                L"\" " + Text::Widen(std::to_string(first)) + L" " + Text::Widen(std::to_string(second));
    STARTUPINFOW info{};
    info.cb = sizeof info;
    EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &info, &_process))
        << GetLastError();
}

Peer::~Peer()
{
    if (_process.hProcess == nullptr)
        return;
    TerminateProcess(_process.hProcess, 1);
    WaitForEnd();
    CloseHandle(_process.hThread);
    CloseHandle(_process.hProcess);
}

bool Peer::WaitUntilReady()
{
    return WaitForFile(ReadyFile(_signal), _process.hProcess);
}

DWORD Peer::Finish()
{
    MakeFile(EndFile(_signal));
    return WaitForEnd();
}

DWORD Peer::Kill(DWORD exitCode)
{
    EXPECT_TRUE(TerminateProcess(_process.hProcess, exitCode));
    return WaitForEnd();
}

DWORD Peer::WaitForEnd()
{
    DWORD code = 0;
    EXPECT_EQ(WaitForSingleObject(_process.hProcess, 60'000), DWORD{WAIT_OBJECT_0});
    EXPECT_TRUE(GetExitCodeProcess(_process.hProcess, &code));
    return code;
}

} // namespace qxtest

// Replaces GoogleTest's main().
int main(int count, char** arguments)
{
    if (count > 1 && std::string(arguments[1]) == "--peer")
        return qxtest::RunPeer(count - 2, arguments + 2);
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
