// The library in a process with libwinpr2, which exports functions of the system under their plain names. CMake links
// one program with libwinpr2 before the library and one with libwinpr2 after it; each must find its own functions.
#include <qxut23/qxut23.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

// Functions of the other library.
extern "C"
{
    void* CreateEventA(void* attributes, int manualReset, int initialState, const char* name);
    int SetEvent(void* event);
    std::uint32_t WaitForSingleObject(void* object, std::uint32_t milliseconds);
    int CloseHandle(void* object);
}

TEST(Neighbour, ProfileIsSavedLockedAndRead)
{
    char folder[] = "/tmp/qxut-neighbour-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string file = std::string(folder) + "/a.ini";
    const HPROFJOB job = ProfJobOpenExclusiveA(file.c_str());
    ProfSetStringA(job, nullptr, "Page/Width", "210");
    EXPECT_EQ(ProfSaveA(job, nullptr, PROF_FORM_TEXT), PROF_OK);

    std::atomic<bool> isClosed = false;
    std::thread owner(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            isClosed = true;
            ProfJobClose(job);
        });
    const HPROFJOB second = ProfJobOpenExclusiveA(file.c_str());
    EXPECT_TRUE(isClosed) << "the first job keeps the file to itself";
    EXPECT_EQ(ProfGetError(second), PROF_OK);
    owner.join();
    char value[8] = {};
    EXPECT_EQ(ProfGetStringA(second, nullptr, "Page/Width", value, sizeof value, ""), 3);
    EXPECT_STREQ(value, "210");
    ProfJobClose(second);
    std::filesystem::remove_all(folder);
}

TEST(Neighbour, FunctionsOfBothStayTheirOwn)
{
    void* const event = CreateEventA(nullptr, 1, 0, nullptr);
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(WaitForSingleObject(event, 0), 258u) << "WAIT_TIMEOUT";
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WaitForSingleObject(event, 0), 0u);
    EXPECT_TRUE(CloseHandle(event));

    QXWCHAR* text = SysAllocStringLen(nullptr, 100);
    static constexpr QXWCHAR kHtml[] = {'<', 'b', '>', 'a', '&', 'l', 't', ';', 0};
    UtilConvertHtml2PlainText(kHtml, &text, 0);
    EXPECT_EQ(SysStringLen(text), 2u) << "a<";
    SysFreeString(text);
}
