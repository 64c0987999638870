// The messages of failures, and names of security identifiers.
#include "accounts/access_rights.h"
#include "accounts/account_of_sid.h"
#include "support/debug_lines.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace qx;

TEST(AccessRights, FailuresNameTheStepAndTheReason)
{
    const qxtest::TempFolder folder;
    const String file = folder.Make(L"file", "content"), missing = folder.Path(L"missing");
    const std::tuple<const String&, const wchar_t*, const wchar_t*, unsigned> cases[] = {
        {missing, L"nobody", L"GetNamedSecurityInfo", ERROR_FILE_NOT_FOUND},
#if !defined(_WIN32) // Wine has another error for an unknown account
        {file, L"qx-no-such-account", L"SetEntriesInAcl", ERROR_NONE_MAPPED},
        {file, L".\\qx-no-such-account", L"SetEntriesInAcl", ERROR_NONE_MAPPED},
#endif
    };
    for (const auto& [path, account, step, error] : cases)
    {
        const qxtest::DebugLines lines;
        EXPECT_FALSE(AddAccessRights(path, account, GENERIC_READ, 0));
        EXPECT_STREQ(lines.Only(),
            String(String::kFormatted, L"__AdvAPI.%s failed: %s", step, String::SystemErrorText(error).Text()));
    }
}

TEST(AccountOfSid, MalformedIdentifiersHaveNoName)
{
    // The header of the last identifier announces fifteen subauthorities, but none follow.
    for (const wchar_t* const sid : {L"", L"SID:", L"SID:S-1-", L"SID:nonsense", L"!", L"AQE=", L"AQ8AAAAAAAUSAAAA"})
        EXPECT_STREQ(AccountOfSid(sid), L"") << String(sid).NarrowText();
}
