// Access to files: open files, rights, paths of drives and shares.
#include <qxut23/access.h>

#include "accounts/access_rights.h"
#include "accounts/account_of_sid.h"
#include "accounts/file_users.h"
#include "accounts/path_forms.h"
#include "core/charset/charset_conversion.h"
#include "core/debug_line.h"
#include "exports/guard.h"

#include <cstdint>
#include <cstring>

using namespace qx;

namespace
{

constexpr std::int32_t kPathFailed = -1;
constexpr std::int32_t kNetworkFailed = -2;
constexpr std::int32_t kRightsFailed = -2;
constexpr std::int32_t kNoAccessArgument = -3;

static_assert(QXUT_FILE_OPEN_READ == PERM_FILE_READ && QXUT_FILE_OPEN_WRITE == PERM_FILE_WRITE &&
              QXUT_FILE_OPEN_CREATE == PERM_FILE_CREATE);
static_assert(QXUT_INHERIT_FILES == SUB_OBJECTS_ONLY_INHERIT && QXUT_INHERIT_FOLDERS == SUB_CONTAINERS_ONLY_INHERIT);

using EnsurePath = bool (*)(const String& path, String& result);

// Returns false if memory for the BSTR runs out.
bool Deliver(const String& text, QXWCHAR** out)
{
    return !out || text.ToBSTR(out);
}

std::int32_t EnsureWide(EnsurePath ensure, const QXWCHAR* path, QXWCHAR** result)
{
    return Guarded(kPathFailed,
        [&]
        {
            String ensured;
            return ensure(path, ensured) && Deliver(ensured, result) ? 0 : kPathFailed;
        });
}

std::int32_t EnsureNarrow(EnsurePath ensure, const char* path, char* result, std::uint32_t resultSize)
{
    return Guarded(kPathFailed,
        [&]
        {
            clsCharsetConversionString wide(path);
            String ensured;
            if (!ensure(wide.GetWide(), ensured))
                return kPathFailed;
            clsCharsetConversionString narrow(ensured.Text());
            const std::size_t length = std::strlen(narrow.GetNarrow());
            if (!result || length >= resultSize)
                return static_cast<std::int32_t>(resultSize);
            std::memcpy(result, narrow.GetNarrow(), length + 1);
            return std::int32_t{0};
        });
}

} // namespace

std::int32_t UtilGetFileInfoAccess(const QXWCHAR* path, std::uint32_t* access, QXWCHAR** users)
{
    if (!access)
    {
        DebugLine(L"UtilGetFileAccess(): parameter #2 is NULL");
        return kNoAccessArgument;
    }
    *access = 0;
    return Guarded(kNetworkFailed,
        [&]
        {
            FileUsers found;
            const FileUsersResult result = GetFileInfoAccess(path, NetAPI32(), found);
            *access = found.access;
            if (result != FileUsersResult::NoConnections && !Deliver(found.users, users))
                return kNetworkFailed;
            return result == FileUsersResult::Done ? 0 : kNetworkFailed;
        });
}

std::int32_t UtilAddAccessRights(
    const QXWCHAR* path, const QXWCHAR* account, std::uint32_t permissions, std::uint32_t inheritance)
{
    return Guarded(
        kRightsFailed, [=] { return AddAccessRights(path, account, permissions, inheritance) ? 0 : kRightsFailed; });
}

std::int32_t UtilEnsureLocalPath(const QXWCHAR* path, QXWCHAR** result)
{
    return EnsureWide(EnsureLocalPath, path, result);
}

std::int32_t UtilEnsureUNCPath(const QXWCHAR* path, QXWCHAR** result)
{
    return EnsureWide(EnsureUNCPath, path, result);
}

std::int32_t UtilEnsureLocalPathForWise(const char* path, char* result, std::uint32_t resultSize)
{
    return EnsureNarrow(EnsureLocalPath, path, result, resultSize);
}

std::int32_t UtilEnsureUNCPathForWise(const char* path, char* result, std::uint32_t resultSize)
{
    return EnsureNarrow(EnsureUNCPath, path, result, resultSize);
}

std::int32_t UtilAddAccessRightsForWise(
    const char* path, const char* sid, std::uint32_t permissions, std::uint32_t inheritance)
{
    return Guarded(kRightsFailed,
        [=]
        {
            clsCharsetConversionString widePath(path);
            clsCharsetConversionString wideSid(sid);
            const String account = AccountOfSid(wideSid.GetWide());
            return AddAccessRights(widePath.GetWide(), account, permissions, inheritance) ? 0 : kRightsFailed;
        });
}
