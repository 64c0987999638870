// The messages of failures, and names of security identifiers.
#include "accounts/access_rights.h"
#include "accounts/account_of_sid.h"
#include "support/debug_lines.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

using namespace qx;
using qxtest::DebugLines;
using qxtest::TempFolder;

namespace
{

String Message(const wchar_t* step, unsigned error)
{
    return String(String::kFormatted, L"__AdvAPI.%s failed: %s", step, String::SystemErrorText(error).Text());
}

} // namespace

TEST(AccessRights, FailuresNameTheStepAndTheReason)
{
    const TempFolder folder;
    const String file = folder.Path(L"file");
    qxtest::MakeFile(file, "content");
    const DebugLines lines;
    EXPECT_FALSE(AddAccessRights(folder.Path(L"missing"), L"nobody", GENERIC_READ, 0));
    EXPECT_STREQ(lines.Only(), Message(L"GetNamedSecurityInfo", ERROR_FILE_NOT_FOUND));
#if !defined(_WIN32) // Wine has another error for an unknown account
    for (const wchar_t* const account : {L"qx-no-such-account", L".\\qx-no-such-account"})
    {
        const DebugLines more;
        EXPECT_FALSE(AddAccessRights(file, account, GENERIC_READ, 0));
        EXPECT_STREQ(more.Only(), Message(L"SetEntriesInAcl", ERROR_NONE_MAPPED));
    }
#endif
}

TEST(AccountOfSid, MalformedIdentifiersHaveNoName)
{
    // The last one has fifteen subauthorities by its head, and none behind it.
    for (const wchar_t* const sid : {L"", L"SID:", L"SID:S-1-", L"SID:nonsense", L"!", L"AQE=", L"AQ8AAAAAAAUSAAAA"})
        EXPECT_STREQ(AccountOfSid(sid), L"") << String(sid).NarrowText();
}
