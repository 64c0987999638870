#include "threads/message_box_thread.h"

#include <gtest/gtest.h>

using namespace qx;

namespace
{

// The system itself would wait for someone to press a button.
#if !defined(_WIN32)
TEST(MessageBoxThread, ShowsTheBoxAndKeepsTheAnswer)
{
    testing::internal::CaptureStderr();
    int answer = 0;
    {
        clsMessageBoxThread box(L"Caption", L"Text", MB_YESNO | MB_DEFBUTTON2, 99);
        for (int round = 0; box.Result() == 99 && round < 10'000; ++round)
            Sleep(1);
        answer = box.Result();
    }
    EXPECT_EQ(answer, IDNO);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Caption: Text [no]\n");
}
#endif

} // namespace
