#include "module/environment_type.h"

#include "core/critical_section.h"
#include "core/debug_line.h"
#include "core/registry/registry.h"
#include "module/late_libraries.h"
#include "module/module_paths.h"

#include <wchar.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <optional>
#include <vector>

namespace qx
{
namespace
{

constexpr const wchar_t* kWebServers[] = {L"aspnet_wp", L"iisexpress", L"w3wp"};
constexpr const wchar_t* kWebServerPrefix = L"WebDev.WebServer";
constexpr std::size_t kWebServerPrefixLength = 16;

// The SID S-1-5-4 as laid out in memory: the group of users who are logged on interactively.
constexpr unsigned char kInteractiveGroup[] = {1, 1, 0, 0, 0, 0, 0, 5, 4, 0, 0, 0};

struct Known
{
    clsCriticalSection lock; // guards the members below
    std::optional<EnvironmentType> type;
    std::optional<bool> interaction;
};

Known& TheKnown()
{
    static Known known;
    return known;
}

bool IsSame(const wchar_t* a, const wchar_t* b)
{
    return _wcsicmp(a, b) == 0;
}

String UserName()
{
    wchar_t name[257] = {}; // the longest name and its terminator
    DWORD size = static_cast<DWORD>(std::size(name));
    return GetUserNameW(name, &size) ? String(name) : String();
}

bool IsInteractiveGroup(const SID_AND_ATTRIBUTES& group)
{
    // The second byte determines the length of the rest, so compare it before reading on.
    const auto* const sid = static_cast<const unsigned char*>(group.Sid);
    return sid != nullptr && sid[0] == kInteractiveGroup[0] && sid[1] == kInteractiveGroup[1] &&
           std::memcmp(sid, kInteractiveGroup, sizeof kInteractiveGroup) == 0;
}

// Returns the groups of the process token, or an empty vector if they can't be read.
std::vector<std::byte> ReadGroups()
{
    auto& advAPI = AdvAPI32();
    HANDLE token = nullptr;
    if (!advAPI.p_OpenProcessToken.IsThere() || !advAPI.p_GetTokenInformation.IsThere() ||
        !advAPI.p_OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token))
        return {};
    DWORD size = 0;
    advAPI.p_GetTokenInformation(token, TokenGroups, nullptr, 0, &size);
    std::vector<std::byte> groups(size);
    const bool isRead = size >= sizeof(TOKEN_GROUPS) &&
                        advAPI.p_GetTokenInformation(token, TokenGroups, groups.data(), size, &size) != FALSE;
    CloseHandle(token);
    return isRead ? groups : std::vector<std::byte>();
}

// Returns true if the user has settings, which indicates an interactive user.
bool HasUserSettings()
{
    const HKEY root = UtilGetUserRootKey(true);
    HKEY key = nullptr;
    const bool has = RegOpenKeyExW(root, L"Software", 0, KEY_READ, &key) == ERROR_SUCCESS;
    if (has)
        RegCloseKey(key);
    CloseUserRootKey(root);
    return has;
}

EnvironmentType AskEnvironmentType()
{
    const EnvironmentType byNames = EnvironmentTypeOfNames(UserName(), ProcessBaseName());
    if (byNames != EnvironmentType::Unknown)
        return byNames;
    const std::vector<std::byte> groups = ReadGroups();
    if (!groups.empty())
        return EnvironmentTypeOfGroups(*reinterpret_cast<const TOKEN_GROUPS*>(groups.data()));
    return HasUserSettings() ? EnvironmentType::Interactive : EnvironmentType::Service;
}

bool IsWindowStationVisible()
{
    USEROBJECTFLAGS flags = {};
    const HWINSTA station = GetProcessWindowStation();
    return station != nullptr &&
           GetUserObjectInformationW(station, UOI_FLAGS, &flags, sizeof flags, nullptr) != FALSE &&
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

bool IsForcedInactive()
{
    String names;
    clsRegistryList(HKEY_LOCAL_MACHINE, L"Software\\trelmo", clsRegistryList::kRead)
        .GetString(L"NonInteractiveApps", names, L"");
    for (const String& name : names.Split(L';'))
        if (IsSame(name, ProcessBaseName()))
            return true;
    return false;
}

EnvironmentType KnownType(Known& known)
{
    if (!known.type)
        known.type = AskEnvironmentType();
    return *known.type;
}

bool AskInteraction(Known& known)
{
    if (!IsWindowStationVisible())
    {
        DebugLine(L"suppressed UI interaction: invisible WindowStation");
        return false;
    }
    if (IsForcedInactive())
    {
        DebugLine(L"suppressed UI interaction: application '%s' forced to be UI inactive by registry key",
            ProcessBaseName().Text());
        return false;
    }
    const auto type = static_cast<std::int32_t>(KnownType(known));
    return type == 1 || type == 2;
}

} // namespace

EnvironmentType EnvironmentTypeOfNames(const wchar_t* userName, const wchar_t* processBaseName)
{
    const bool isWebServer = std::any_of(std::begin(kWebServers), std::end(kWebServers),
        [processBaseName](const wchar_t* name) { return IsSame(processBaseName, name); });
    if (IsSame(userName, L"aspnet") || isWebServer ||
        _wcsnicmp(processBaseName, kWebServerPrefix, kWebServerPrefixLength) == 0)
        return EnvironmentType::WebServer;
    return IsSame(userName, L"system") ? EnvironmentType::Service : EnvironmentType::Unknown;
}

// Without the interactive group, the process is a service: a service's token contains the service group or neither of
// the two.
EnvironmentType EnvironmentTypeOfGroups(const TOKEN_GROUPS& groups)
{
    return std::any_of(groups.Groups, groups.Groups + groups.GroupCount, IsInteractiveGroup)
               ? EnvironmentType::Interactive
               : EnvironmentType::Service;
}

EnvironmentType GetOSEnvironmentType()
{
    Known& known = TheKnown();
    const clsCriticalSectionLock lock(known.lock);
    return KnownType(known);
}

bool GetUIInteractionAllowed()
{
    Known& known = TheKnown();
    const clsCriticalSectionLock lock(known.lock);
    if (!known.interaction)
        known.interaction = AskInteraction(known);
    return *known.interaction;
}

void ForgetEnvironment()
{
    Known& known = TheKnown();
    const clsCriticalSectionLock lock(known.lock);
    known.type.reset();
    known.interaction.reset();
}

} // namespace qx
