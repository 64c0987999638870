// Handles under load, waits, child processes.
#include "peer.h"

#include <algorithm>
#include <cstring>
#include <thread>
#include <vector>

using namespace qxtest;

namespace
{

// While some threads open and close, others use handles that may go at any moment: each use succeeds or is refused, and
// none meets another file than its own.
TEST(Handles, LookedUpWhileOthersCloseThem)
{
    const Folder folder;
    constexpr int files = 8, closers = 2, users = 2;
    const auto path = [&folder](int index)
    {
        return folder / Text::Widen(std::to_string(index));
    };
    for (int index = 0; index < files; ++index)
        MakeFile(path(index), std::string(1, static_cast<char>('a' + index)));
    std::atomic<HANDLE> handles[files] = {};
    std::atomic<bool> isOver = false;
    std::atomic<int> wrong = 0, uses = 0;
    std::vector<std::thread> threads;
    for (int closer = 0; closer < closers; ++closer)
        threads.emplace_back(
            [&, closer]
            {
                while (!isOver)
                    for (int index = closer; index < files; index += closers)
                    {
                        const HANDLE file =
                            CreateFileW(path(index), GENERIC_READ, shareAll, nullptr, OPEN_EXISTING, 0, nullptr);
                        if (const HANDLE former = handles[index].exchange(file))
                            CloseHandle(former);
                    }
            });
    for (int user = 0; user < users; ++user)
        threads.emplace_back(
            [&]
            {
                while (!isOver)
                    for (int index = 0; index < files; ++index)
                    {
                        const HANDLE file = handles[index];
                        char byte = 0;
                        DWORD count = 0;
                        OVERLAPPED at{};
                        if (file == nullptr)
                            continue;
                        ++uses;
                        if (!ReadFile(file, &byte, 1, &count, &at))
                            wrong += GetLastError() != ERROR_INVALID_HANDLE;
                        // On the system a value may be given to the next file at once.
                        else if (isLayer)
                            wrong += byte != static_cast<char>('a' + index);
                    }
            });
    Sleep(300);
    isOver = true;
    for (std::thread& thread : threads)
        thread.join();
    for (const HANDLE file : handles)
        CloseHandle(file);
    EXPECT_GT(uses, 100);
    EXPECT_EQ(wrong, 0);
}

// Of several threads that close one handle, one does it.
TEST(Handles, ClosedOnce)
{
    if (!isLayer)
        GTEST_SKIP()
            << "the system gives a closed value out again at once, so the second thread may close another handle";
    const Folder folder;
    MakeFile(folder / L"file");
    for (int round = 0; round < 200; ++round)
    {
        const HANDLE file = CreateFileW(folder / L"file", GENERIC_READ, shareAll, nullptr, OPEN_EXISTING, 0, nullptr);
        std::atomic<int> closed = 0;
        const auto close = [&]
        {
            closed += CloseHandle(file) ? 1 : 0;
        };
        std::thread first(close), second(close);
        first.join();
        second.join();
        ASSERT_EQ(closed, 1);
    }
}

TEST(Waits, ForProcesses)
{
    const Folder folder;
    Peer peer(folder, "exit", folder / L"unused", 200, 42); // ends after 200 ms
    const HANDLE process = peer.process();
    DWORD code = 0;
    const ULONGLONG begin = GetTickCount64();
    EXPECT_EQ(WaitForSingleObject(process, 20), DWORD{WAIT_TIMEOUT});
    EXPECT_GE(GetTickCount64() - begin, 15u);
    EXPECT_TRUE(GetExitCodeProcess(process, &code));
    EXPECT_EQ(code, DWORD{STILL_ACTIVE});

    Peer second(folder, "exit", folder / L"unused", 0, 7);
    const HANDLE both[] = {process, second.process()};
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 10'000), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(WaitForMultipleObjects(2, both, TRUE, 10'000), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, INFINITE), DWORD{WAIT_OBJECT_0}) << "the first of those that are";
    EXPECT_TRUE(GetExitCodeProcess(process, &code));
    EXPECT_EQ(code, 42u);
    if (isLayer) // Wine lets an ended process be ended again
    {
        EXPECT_FALSE(TerminateProcess(process, 1));
    }
    EXPECT_EQ(WaitForSingleObject(nullptr, 0), DWORD{WAIT_FAILED});
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(WaitForMultipleObjects(0, both, FALSE, 0), DWORD{WAIT_FAILED});
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(WaitForSingleObject(GetCurrentProcess(), 0), DWORD{WAIT_TIMEOUT});
}

class Child : public testing::Test
{
protected:
    // Starts this program to write down how it was started; gives what it wrote.
    std::string Started(const Text& arguments, LPVOID environment, DWORD flags, LPCWSTR current)
    {
        WCHAR program[1000] = {};
        GetModuleFileNameW(nullptr, program, 1000);
        Text line = Text(L"\"") + program + L"\" --tell \"" + folder / L"told" + L"\" " + arguments;
        STARTUPINFOW info{};
        info.cb = sizeof info;
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(
            CreateProcessW(program, line.data(), nullptr, nullptr, FALSE, flags, environment, current, &info, &process))
            << GetLastError();
        EXPECT_EQ(WaitForSingleObject(process.hProcess, 20'000), DWORD{WAIT_OBJECT_0});
        EXPECT_TRUE(CloseHandle(process.hThread));
        EXPECT_TRUE(CloseHandle(process.hProcess));
        return BytesOf(folder / L"told");
    }

    const Folder folder;
};

TEST_F(Child, GetsItsArguments)
{
    struct
    {
        const wchar_t* line;
        const char* arguments; // each in brackets
    } constexpr cases[] = {{L"", ""}, {L"  a \t b  ", "[a][b]"}, {L"a\"b c\"d", "[ab cd]"}, {L"\"\" x", "[][x]"},
        {L"a\\b \\\\c", "[a\\b][\\\\c]"}, {L"\\\"a\\\"", "[\"a\"]"}, {L"\"a\\\\\" b", "[a\\][b]"},
        {L"\"a\\\\\\\"b\"", "[a\\\"b]"}, {L"\"a\"\"b\"", "[a\"b]"}};
    for (const auto& [line, arguments] : cases)
        EXPECT_EQ(Started(line, nullptr, 0, nullptr), arguments) << Text(line).Narrow();
}

TEST_F(Child, GetsEnvironmentAndFolder)
{
    EXPECT_TRUE(SetEnvironmentVariableW(L"QXTOLD", L"inherited"));
    EXPECT_EQ(Started(L"--variable QXTOLD", nullptr, 0, nullptr), "[inherited]");
    EXPECT_TRUE(SetEnvironmentVariableW(L"QXTOLD", nullptr));
    EXPECT_TRUE(CreateDirectoryW(folder / L"current", nullptr));
    MakeFile(folder / L"current/here");
    EXPECT_EQ(Started(L"--exists here", nullptr, 0, folder / L"current"), "[yes]");
    if (isLayer) // a block of one variable is too little for a process under Wine
    {
        WCHAR wide[] = L"QXTOLD=given\0";
        EXPECT_EQ(Started(L"--variable QXTOLD", wide, CREATE_UNICODE_ENVIRONMENT, nullptr), "[given]");
        char narrow[] = "QXTOLD=given\0";
        EXPECT_EQ(Started(L"--variable QXTOLD", narrow, 0, nullptr), "[given]");
    }
}

TEST_F(Child, ThatCannotBeStarted)
{
    MakeFile(folder / L"text.txt", "no program");
    const auto error = [](const Text& name, const Text& current = Text())
    {
        Text line = name;
        STARTUPINFOW info{};
        info.cb = sizeof info;
        PROCESS_INFORMATION process{};
        return ErrorOf(
            [&]
            {
                return CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                    current.size() == 0 ? nullptr : static_cast<LPCWSTR>(current), &info, &process);
            });
    };
    EXPECT_EQ(error(L"qxnosuchprogram a b"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(error(folder / L"missing.exe"), DWORD{ERROR_FILE_NOT_FOUND});
    if (isLayer) // Wine does not tell a missing folder from a missing file
    {
        EXPECT_EQ(error(folder / L"missing/program.exe"), DWORD{ERROR_PATH_NOT_FOUND});
    }
    WCHAR program[1000] = {};
    GetModuleFileNameW(nullptr, program, 1000);
    EXPECT_EQ(error(Text(L"\"") + program + L"\" --tell x", folder / L"missing"), DWORD{ERROR_DIRECTORY});
}

} // namespace
