// Opening, creating and deleting keys.
#include "base/text.h"
#include "registry/open_key.h"

#include <windows.h>

using namespace qxplatform;

namespace
{

// Returns the open key for `subKey` relative to `handle`. No rights of `handle` are required, because the new handle
// has its own. The key needn't exist, but the key of `handle` must.
LSTATUS Locate(HKEY handle, LPCWSTR subKey, Ref<OpenKey>& located)
{
    Ref<OpenKey> base;
    LSTATUS status = FindOpenKey(handle, 0, base);
    if (status != ERROR_SUCCESS)
        return status;
    KeyPath path = base->path;
    if (subKey != nullptr)
        status = AppendNames(path, View(subKey));
    if (status != ERROR_SUCCESS)
        return status;
    located = MakeObject<OpenKey>(base->hive, std::move(path));
    return base->hive.Read([&](const RegistryKey& root) -> LSTATUS
        { return root.Find(base->path) != nullptr ? ERROR_SUCCESS : ERROR_KEY_DELETED; });
}

bool Exists(const OpenKey& key)
{
    return key.hive.Read([&](const RegistryKey& root) -> LSTATUS
               { return root.Find(key.path) != nullptr ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND; }) == ERROR_SUCCESS;
}

enum class Below
{
    Refuse, // a key with subkeys is not deleted
    Remove
};

LSTATUS Remove(const OpenKey& key, Below below)
{
    if (key.path.empty())
        return ERROR_ACCESS_DENIED; // a predefined key
    // Checked first, so that nothing is written, not even the lock file, if the key doesn't exist.
    if (!Exists(key))
        return ERROR_FILE_NOT_FOUND;
    return key.hive.Change(
        [&](RegistryKey& root) -> LSTATUS
        {
            const RegistryKey* const found = root.Find(key.path);
            if (found == nullptr)
                return ERROR_FILE_NOT_FOUND;
            if (below == Below::Refuse && !found->keys.empty())
                return ERROR_ACCESS_DENIED;
            KeyPath parent = key.path;
            parent.pop_back();
            root.Find(parent)->keys.erase(FoldName(key.path.back()));
            return ERROR_SUCCESS;
        });
}

} // namespace

LSTATUS WINAPI RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD, REGSAM access, PHKEY result)
{
    if (result == nullptr)
        return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    if (IsPredefined(key) && (subKey == nullptr || *subKey == 0))
    {
        *result = key; // as documented, with all its rights
        return ERROR_SUCCESS;
    }
    Ref<OpenKey> located;
    const LSTATUS status = Locate(key, subKey, located);
    if (status != ERROR_SUCCESS)
        return status;
    return Exists(*located) ? AddOpenKey(located, access, result) : ERROR_FILE_NOT_FOUND;
}

LSTATUS WINAPI RegOpenCurrentUser(REGSAM access, PHKEY result)
{
    if (result == nullptr)
        return ERROR_INVALID_PARAMETER;
    return AddOpenKey(MakeObject<OpenKey>(Hive::User(), KeyPath()), access, result);
}

LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR subKey, DWORD reserved, LPWSTR, DWORD options, REGSAM access,
    LPSECURITY_ATTRIBUTES, PHKEY result, LPDWORD disposition)
{
    if (reserved != 0 || result == nullptr)
        return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    if (subKey == nullptr)
        return ERROR_BADKEY;
    if (options != REG_OPTION_NON_VOLATILE)
        return ERROR_NOT_SUPPORTED;
    Ref<OpenKey> located;
    LSTATUS status = Locate(key, subKey, located);
    if (status != ERROR_SUCCESS)
        return status;
    bool created = false;
    if (!Exists(*located))
    {
        status = located->hive.Change(
            [&](RegistryKey& root) -> LSTATUS
            {
                if (root.Find(located->path) != nullptr)
                    return Hive::kUnchanged; // another process was faster
                root.Ensure(located->path);
                created = true;
                return ERROR_SUCCESS;
            });
        if (status != ERROR_SUCCESS)
            return status;
    }
    if (disposition != nullptr)
        *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return AddOpenKey(located, access, result);
}

LSTATUS WINAPI RegCloseKey(HKEY key)
{
    if (IsPredefined(key))
        return ERROR_SUCCESS;
    const DWORD lastError = GetLastError(); // these functions don't change the last error
    const auto isKey = [](const Object& object)
    {
        return object.type == ObjectType::RegistryKey;
    };
    const bool closed = CloseEntry(key, isKey) != FALSE;
    SetLastError(lastError);
    return closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LSTATUS WINAPI RegDeleteKeyW(HKEY key, LPCWSTR subKey)
{
    if (subKey == nullptr)
        return ERROR_INVALID_PARAMETER;
    Ref<OpenKey> located;
    const LSTATUS status = Locate(key, subKey, located);
    if (status != ERROR_SUCCESS)
        return status;
    return Remove(*located, Below::Refuse);
}

LSTATUS WINAPI RegDeleteTreeW(HKEY handle, LPCWSTR subKey)
{
    if (subKey != nullptr && *subKey != 0)
    {
        Ref<OpenKey> located;
        const LSTATUS status = Locate(handle, subKey, located);
        return status == ERROR_SUCCESS ? Remove(*located, Below::Remove) : status;
    }
    // Without a subkey, the key itself is kept and emptied.
    return ChangeKey(handle, KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE | KEY_SET_VALUE,
        [](RegistryKey& key) -> LSTATUS
        {
            key.keys.clear();
            key.values.clear();
            return ERROR_SUCCESS;
        });
}
