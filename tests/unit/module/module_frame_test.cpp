#include "core/module_frame.h"

#include "core/assertion.h"
#include "core/module.h"
#include "core/module_paths.h"
#include "support/debug_lines.h"

#include <gtest/gtest.h>

#include <stdlib.h>

#include <new>
#include <string>

using namespace qx;
using qxtest::DebugLines;

namespace
{

std::string done;

void Note(const char* step)
{
    done += step;
    done += LibraryHandle() ? " with the library, " : " without the library, ";
}

constexpr ModuleSteps noted = {
    [] { Note("start"); },
    [] { Note("report"); },
    [] { Note("close"); },
};

constexpr ModuleSteps failing = {
    [] { throw std::bad_alloc(); },
    [] { throw 1; },
    [] { Note("close"); },
};

class ModuleFrame : public testing::Test
{
protected:
    ModuleFrame() { done.clear(); }
    ~ModuleFrame() override
    {
        DetachModule({});
        _set_invalid_parameter_handler(nullptr);
    }
};

} // namespace

TEST_F(ModuleFrame, StepsRunWhileTheLibraryIsKnown)
{
    AttachModule(GetModuleHandleW(nullptr), noted);
    EXPECT_EQ(LibraryHandle(), GetModuleHandleW(nullptr));
    EXPECT_EQ(done, "start with the library, ");
    DetachModule(noted);
    EXPECT_EQ(LibraryHandle(), nullptr);
    DetachModule(noted); // nothing is left to do
    EXPECT_EQ(done, "start with the library, report with the library, close with the library, ");
}

TEST_F(ModuleFrame, AStepThatFailsKeepsNoneOfTheNext)
{
    AttachModule(GetModuleHandleW(nullptr), failing);
    DetachModule(failing);
    EXPECT_EQ(done, "close with the library, ");
    EXPECT_EQ(LibraryHandle(), nullptr);
}

#ifndef _WIN32 // Wine's msvcrt.dll has no such function, and mingw's stand-in for it only keeps the handler
TEST_F(ModuleFrame, InvalidParametersOfTheRuntimeAreLogged)
{
    AttachModule(GetModuleHandleW(nullptr), {});
    const DebugLines lines;
    wchar_t path[4] = L"abc";
    EXPECT_NE(_wmakepath_s(path, 0, L"c", nullptr, nullptr, nullptr), 0);
    EXPECT_STREQ(lines.Only(), L"INVALID PARAMETER in CRT function detected - ignored");
}
#endif

TEST(Assertion, TextIsCutAt80Characters)
{
    EXPECT_STREQ(AssertionText(L"a < b", L"f.cpp", 4000000000u), L"line 4000000000 in file f.cpp:\n\"a < b\"");
    String expression;
    expression.Fill(L'x', 300);
    const String whole = String(L"line 1 in file f:\n\"") + expression;
    EXPECT_STREQ(AssertionText(expression, L"f", 1), whole.Left(80));
}

TEST_F(ModuleFrame, InvalidParametersAreToldWithTheirTexts)
{
    AttachModule(GetModuleHandleW(nullptr), {});
    const auto handler = _set_invalid_parameter_handler(nullptr);
    ASSERT_NE(handler, nullptr);
    const DebugLines lines;
    handler(L"size > 0", L"wcscpy_s", L"copy.c", 17, 0);
    EXPECT_STREQ(lines.Only(), L"copy.c (line 17): size > 0: INVALID PARAMETER in 'wcscpy_s'");
}

TEST_F(ModuleFrame, TheFormerHandlerComesBackUnlessAnotherTookItsPlace)
{
    const _invalid_parameter_handler others[] = {
        [](const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t) {},
        [](const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t)
        {
            done += "called";
        }};
    for (const bool isTaken : {false, true})
    {
        _set_invalid_parameter_handler(others[0]);
        AttachModule(GetModuleHandleW(nullptr), {});
        if (isTaken)
            _set_invalid_parameter_handler(others[1]);
        DetachModule({});
        EXPECT_EQ(_set_invalid_parameter_handler(nullptr), others[isTaken ? 1 : 0]);
    }
}

TEST_F(ModuleFrame, NamesOfTheProgram)
{
    AttachModule(GetModuleHandleW(nullptr), {});
    const ModulePaths& paths = ProcessPaths();
    EXPECT_STREQ(paths.baseName, L"CORE_MODULE_TEST");
    EXPECT_EQ(paths.file.Left(paths.baseName.Length()), paths.baseName);
    EXPECT_EQ(paths.directory + paths.file, paths.path);
    EXPECT_EQ(paths.path, LibraryPaths().path);
    EXPECT_EQ(paths.path, ModulePath(nullptr).Upper());
}
