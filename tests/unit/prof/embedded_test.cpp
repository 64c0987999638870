#include "prof/embedded_files.h"
#include "prof/path.h"
#include "support/debug_lines.h"
#include "support/temp_folder.h"
#include "unit/prof/job_support.h"

#include <cstdint>
#include <tuple>

using namespace qx;
using namespace qxtest;

// The log contains the reason for a missing file.
TEST(ProfEmbedded, WhatIsLogged)
{
    const TempFolder folder;
    const String prefix = folder.Path(L"");
    CreateDirectoryW(folder.Path(L"taken"), nullptr);
    const std::tuple<const wchar_t*, const wchar_t*, String, std::int32_t, String> cases[] = {
        {L"a", L"QUJD", folder.Path(), 1, L""}, {L"a", L"QUJD", prefix, 1, L""}, // no second separator
        {L"", L"QUJD", folder.Path(), 0, L"ProfExtractFiles:\"Filename=\" not found"},
        {L"../a", L"QUJD", folder.Path(), 0, L"ProfExtractFiles: '../a' is refused, it leads out of the directory"},
        {L"nul.a.b", L"QUJD", prefix, 0, L"ProfExtractFiles: 'nul.a.b' is refused, it leads out of the directory"},
        {L"a", L"", prefix, 0, String(L"ProfExtractFiles: '") + prefix + L"a' could not be unpacked"},
        {L"taken", L"", prefix, 0, String(L"'") + prefix + L"taken' could not be created"},
        {L"a", L"QUJD", folder.Path(L"no/folder"), kProfWriteFailed,
            String(L"problem creating directory '") + folder.Path(L"no/folder") + L"'"}};
    for (const auto& [name, contents, directory, result, line] : cases)
    {
        const JobHolder job = NewJob();
        clsItemList& entry = AppendListByPath(job->Root(), L"File.Entry");
        AppendLeafByPath(entry, L"Name", name);
        AppendLeafByPath(entry, L"Contents", contents);
        const DebugLines lines;
        EXPECT_EQ(ExtractFiles(job->Root(), directory, L""), result);
        EXPECT_STREQ(lines.Last(), line);
        EXPECT_EQ(lines.Count(), result == 1 ? 0u : 1u);
    }
    EXPECT_FALSE(Exists(folder.Path(L"a"))) << "what can't be unpacked takes its file away";
}
