#include "accounts/access_rights.h"

#include "core/debug_line.h"
#include "module/late_libraries.h"

#include <memory>

namespace qx
{
namespace
{

struct FreeLocal
{
    void operator()(void* block) const { LocalFree(block); }
};

using LocalBlock = std::unique_ptr<void, FreeLocal>;

// Logs an error. Returns true for success. `step` is the name of the function that was called.
bool IsDone(const wchar_t* step, DWORD error)
{
    if (error != ERROR_SUCCESS)
        DebugLine(L"__AdvAPI.%s failed: %s", step, String::SystemErrorText(error).Text());
    return error == ERROR_SUCCESS;
}

// Calls a function of a late-bound library. Returns ERROR_PROC_NOT_FOUND if the library lacks it.
template <class Function, class... Arguments>
DWORD Call(Function& function, Arguments... arguments)
{
    return function.IsThere() ? function(arguments...) : DWORD{ERROR_PROC_NOT_FOUND};
}

String WithoutLocalDomain(const String& account)
{
    constexpr std::size_t kPrefixLength = 2;
    return account.Compare(L".\\", kPrefixLength) == 0 ? account.Mid(kPrefixLength) : account;
}

} // namespace

bool AddAccessRights(const String& path, const String& account, DWORD permissions, DWORD inheritance)
{
    auto& advAPI = AdvAPI32();
    const String name = WithoutLocalDomain(account);
    PACL oldList = nullptr;
    PACL newList = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!IsDone(L"GetNamedSecurityInfo",
            Call(advAPI.p_GetNamedSecurityInfo, path.Text(), SE_FILE_OBJECT, DWORD{DACL_SECURITY_INFORMATION},
                static_cast<PSID*>(nullptr), static_cast<PSID*>(nullptr), &oldList, static_cast<PACL*>(nullptr),
                &descriptor)))
        return false;
    const LocalBlock descriptorBlock(descriptor);

    EXPLICIT_ACCESS_W access{};
    DWORD error = ERROR_PROC_NOT_FOUND;
    if (advAPI.p_BuildExplicitAccessWithName.IsThere())
    {
        advAPI.p_BuildExplicitAccessWithName(&access, name, permissions, SET_ACCESS, inheritance);
        error = Call(advAPI.p_SetEntriesInAcl, ULONG{1}, &access, oldList, &newList);
    }
    if (!IsDone(L"SetEntriesInAcl", error))
        return false;
    const LocalBlock listBlock(newList);

    return IsDone(L"SetNamedSecurityInfo", Call(advAPI.p_SetNamedSecurityInfo, path.Text(), SE_FILE_OBJECT,
                                               DWORD{DACL_SECURITY_INFORMATION}, PSID{}, PSID{}, newList, PACL{}));
}

} // namespace qx
