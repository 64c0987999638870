// The tasks of the second process.
#include "peer.h"

#include <cstdlib>
#include <string>

using namespace qxtest;

namespace
{

constexpr DWORD kPeerPatience = 60'000;

// Adds one to the number in the file. The caller must have exclusive access.
void Increment(HANDLE file)
{
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    const std::string next = std::to_string(std::atoi(ReadBytes(file, 20).c_str()) + 1);
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    WriteBytes(file, next);
}

// Increments the number once in each round, protected either by opening the file exclusively or by a lock next to the
// number. The lock is taken through a separate handle, so that it needs no write access.
int Count(const Text& path, bool byLock, DWORD access, DWORD rounds)
{
    const DWORD refusal = byLock ? ERROR_LOCK_VIOLATION : ERROR_SHARING_VIOLATION;
    const Handle lock = byLock ? Open(path, access, kShareAll) : Handle();
    const ULONGLONG end = GetTickCount64() + kPeerPatience;
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

// Adds one to the first byte of the mapping and keeps it open.
int Map(const Text& path, DWORD testProcess)
{
    const Text space = kIsLayer ? L"Global\\" : L"Local\\"; // only in the layer both are the same
    const Handle mapping(OpenFileMappingW(FILE_MAP_WRITE, FALSE, space + MappingName(testProcess)));
    auto* const view = static_cast<BYTE*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0));
    if (view == nullptr)
        return 8;
    ++*view;
    MakeFile(ReadyFile(path));
    Sleep(kPeerPatience); // until it is killed
    return 3;
}

// Runs the task given by the first argument.
int RunPeer(int count, char** arguments)
{
    if (count < 4)
        return 2;
    const std::string task = arguments[0];
    const Text path = Text::Widen(arguments[1]);
    const DWORD first = static_cast<DWORD>(std::strtoul(arguments[2], nullptr, 10));
    const DWORD second = static_cast<DWORD>(std::strtoul(arguments[3], nullptr, 10));
    if (task == "count" || task == "countlocked")
        return Count(path, task == "countlocked", first, second);

    if (task == "map")
        return Map(path, first);

    const Handle file = Open(path, first, second);
    if (!file || !LockFile(file, 2, 0, 3, 0))
        return 7;
    MakeFile(ReadyFile(path));
    Sleep(kPeerPatience); // until it is killed
    return 3;
}

} // namespace

// Replaces GoogleTest's main().
int main(int count, char** arguments)
{
    if (count > 1 && std::string(arguments[1]) == "--peer")
        return RunPeer(count - 2, arguments + 2);
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
