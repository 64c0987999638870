// Handles under load.
#include "support/run_in_threads.h"
#include "system_support.h"

using namespace qxtest;

namespace
{

// While some threads open and close, others use handles that may be closed at any moment. Each use succeeds or is
// refused, and none accesses another thread's file.
TEST(Handles, LookedUpWhileOthersCloseThem)
{
    const Folder folder;
    constexpr unsigned kFiles = 8, kClosers = 2, kThreads = 4;
    Text paths[kFiles];
    for (unsigned index = 0; index < kFiles; ++index)
        MakeFile(
            paths[index] = folder / Text::Widen(std::to_string(index)), std::string(1, static_cast<char>('a' + index)));
    std::atomic<HANDLE> handles[kFiles] = {};
    std::atomic<int> wrong = 0, uses = 0;
    const auto replace = [&](unsigned index)
    {
        const HANDLE file = CreateFileW(paths[index], GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
        if (const HANDLE former = handles[index].exchange(file))
            CloseHandle(former);
    };
    const auto use = [&](unsigned index)
    {
        const HANDLE file = handles[index];
        char byte = 0;
        DWORD count = 0;
        OVERLAPPED at{};
        if (file == nullptr)
            return;
        ++uses;
        if (!ReadFile(file, &byte, 1, &count, &at))
            wrong += GetLastError() != ERROR_INVALID_HANDLE;
        else if (kIsLayer) // the system may reuse a value immediately
            wrong += byte != static_cast<char>('a' + index);
    };
    const ULONGLONG begin = GetTickCount64();
    const auto isOver = [&] // a busy machine may need more time
    {
        return GetTickCount64() > begin + (uses > 100 ? 300 : 10'000);
    };
    RunInThreads(kThreads,
        [&](unsigned number)
        {
            while (!isOver())
                for (unsigned index = 0; index < kFiles; ++index)
                    if (number >= kClosers)
                        use(index);
                    else if (index % kClosers == number)
                        replace(index);
        });
    for (const HANDLE file : handles)
        CloseHandle(file);
    EXPECT_GT(uses, 100);
    EXPECT_EQ(wrong, 0);
}

// If several threads close one handle, exactly one succeeds.
TEST(Handles, ClosedOnce)
{
    if (!kIsLayer)
        GTEST_SKIP() << "the system gives a closed value out again, so the second thread may close another handle";
    const Folder folder;
    MakeFile(folder / L"file");
    for (int round = 0; round < 200; ++round)
    {
        const HANDLE file = CreateFileW(folder / L"file", GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
        std::atomic<int> closed = 0;
        RunInThreads(2, [&](int) { closed += CloseHandle(file) ? 1 : 0; });
        ASSERT_EQ(closed, 1);
    }
}

} // namespace
