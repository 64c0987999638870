// Handles under load.
#include "system_support.h"

#include <thread>
#include <vector>

using namespace qxtest;

namespace
{

// While some threads open and close, others use handles that may be closed at any moment. Each use succeeds or is
// refused, and none accesses another thread's file.
TEST(Handles, LookedUpWhileOthersCloseThem)
{
    const Folder folder;
    constexpr int kFiles = 8, kClosers = 2, kUsers = 2;
    Text paths[kFiles];
    for (int index = 0; index < kFiles; ++index)
        MakeFile(
            paths[index] = folder / Text::Widen(std::to_string(index)), std::string(1, static_cast<char>('a' + index)));
    std::atomic<HANDLE> handles[kFiles] = {};
    std::atomic<bool> isOver = false;
    std::atomic<int> wrong = 0, uses = 0;
    std::vector<std::thread> threads;
    for (int closer = 0; closer < kClosers; ++closer)
        threads.emplace_back(
            [&, closer]
            {
                while (!isOver)
                    for (int index = closer; index < kFiles; index += kClosers)
                    {
                        const HANDLE file =
                            CreateFileW(paths[index], GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
                        if (const HANDLE former = handles[index].exchange(file))
                            CloseHandle(former);
                    }
            });
    for (int user = 0; user < kUsers; ++user)
        threads.emplace_back(
            [&]
            {
                while (!isOver)
                    for (int index = 0; index < kFiles; ++index)
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
                        // The system may reuse a value immediately.
                        else if (kIsLayer)
                            wrong += byte != static_cast<char>('a' + index);
                    }
            });
    Sleep(300);
    for (int left = 100; left > 0 && uses <= 100; --left) // a busy machine may need more time
        Sleep(100);
    isOver = true;
    for (std::thread& thread : threads)
        thread.join();
    for (const HANDLE file : handles)
        CloseHandle(file);
    EXPECT_GT(uses, 100);
    EXPECT_EQ(wrong, 0);
}

// If several threads close one handle, exactly one succeeds.
TEST(Handles, ClosedOnce)
{
    if (!kIsLayer)
        GTEST_SKIP()
            << "the system gives a closed value out again at once, so the second thread may close another handle";
    const Folder folder;
    MakeFile(folder / L"file");
    for (int round = 0; round < 200; ++round)
    {
        const HANDLE file = CreateFileW(folder / L"file", GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
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

} // namespace
