#include "threads/message_box_thread.h"

#include "threads_support.h"

// The system itself would wait for a user to press a button.
#if !defined(_WIN32)
#include <atomic>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

using namespace qx;
using namespace qxtest;

namespace
{

// Replaces the standard error stream, to which message boxes are written. Showing one blocks until the stream is
// drained.
class FullStream
{
    static constexpr std::size_t kFilling = 4096;

public:
    FullStream()
    {
        EXPECT_EQ(pipe2(_ends, O_CLOEXEC), 0);
        EXPECT_EQ(fcntl(_ends[1], F_SETPIPE_SZ, static_cast<int>(kFilling)), static_cast<int>(kFilling));
        EXPECT_EQ(write(_ends[1], std::string(kFilling, '.').data(), kFilling), static_cast<ssize_t>(kFilling));
        dup2(_ends[1], STDERR_FILENO);
        close(_ends[1]);
    }
    ~FullStream()
    {
        dup2(_before, STDERR_FILENO);
        close(_before);
        close(_ends[0]);
    }

    // Returns the next `count` bytes written to the stream.
    std::string Take(std::size_t count)
    {
        std::string text(kFilling + count, 0);
        for (std::size_t done = 0; done < text.size();)
        {
            const ssize_t part = read(_ends[0], text.data() + done, text.size() - done);
            if (part <= 0)
                return "(nothing)";
            done += static_cast<std::size_t>(part);
        }
        return text.substr(kFilling);
    }

private:
    const int _before = dup(STDERR_FILENO);
    int _ends[2] = {-1, -1};
};

} // namespace

TEST(MessageBoxThread, NobodyWaitsForTheBoxButTheDestructor)
{
    const std::string expected = "Caption: Text [no]\n";
    FullStream screen;
    auto box = std::make_unique<clsMessageBoxThread>(L"Caption", L"Text", MB_YESNO | MB_DEFBUTTON2, 99);
    EXPECT_EQ(box->Result(), 99);
    EXPECT_EQ(box->GetThreadState(), clsThreadBase::State::Running);
    std::atomic<bool> isGone = false;
    std::thread destroyer([&] { box.reset(), isGone = true; });
    Sleep(50);
    EXPECT_FALSE(isGone);
    EXPECT_EQ(screen.Take(expected.size()), expected);
    destroyer.join();
    const clsMessageBoxThread next(L"Caption", L"Text", MB_YESNO | MB_DEFBUTTON2, 99); // there is room now
    EXPECT_TRUE(WaitUntil([&] { return next.Result() == IDNO; }));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // memory can be limited
TEST(MessageBoxThread, WithoutAThreadTheConstructorShowsTheBox)
{
    testing::internal::CaptureStderr();
    int answer = 99;
    auto state = clsThreadBase::State::None;
    {
        const MemoryBound bound(512 << 10);
        clsMessageBoxThread box(L"Caption", L"Text", MB_YESNOCANCEL | MB_DEFBUTTON3, 99);
        answer = box.Result();
        state = box.GetThreadState();
    }
    const std::string shown = testing::internal::GetCapturedStderr();
    if (state != clsThreadBase::State::None)
        GTEST_SKIP() << "a thread before this one left its stack behind";
    EXPECT_EQ(answer, IDCANCEL);
    EXPECT_EQ(shown, "Caption: Text [cancel]\n");
}
#endif

#endif
