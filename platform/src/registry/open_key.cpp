#include "registry/open_key.h"

#include <windows.h>

#include "base/forever.h"

namespace qxplatform
{

namespace
{

// Maps the generic rights of a key and drops the rights that the system ignores.
REGSAM SpecificRights(REGSAM access)
{
    constexpr struct
    {
        REGSAM generic, specific;
    } kRights[] = {
        {0x80000000, KEY_READ},       // GENERIC_READ
        {0x40000000, KEY_WRITE},      // GENERIC_WRITE
        {0x20000000, KEY_EXECUTE},    // GENERIC_EXECUTE
        {0x10000000, KEY_ALL_ACCESS}, // GENERIC_ALL
        {0x02000000, KEY_ALL_ACCESS}, // MAXIMUM_ALLOWED
    };
    REGSAM rights = access & KEY_ALL_ACCESS;
    for (const auto& right : kRights)
    {
        if ((access & right.generic) != 0)
            rights |= right.specific;
    }
    return rights;
}

const Ref<OpenKey>* Predefined(HKEY handle)
{
    static constinit Forever<Ref<OpenKey>> user;
    static constinit Forever<Ref<OpenKey>> machine;
    if (handle == HKEY_CURRENT_USER)
        return &user.Get([] { return MakeObject<OpenKey>(Hive::User(), KeyPath()); });
    if (handle == HKEY_LOCAL_MACHINE)
        return &machine.Get([] { return MakeObject<OpenKey>(Hive::Machine(), KeyPath()); });
    return nullptr;
}

} // namespace

bool IsPredefined(HKEY handle)
{
    return Predefined(handle) != nullptr;
}

LSTATUS FindOpenKey(HKEY handle, REGSAM rights, Ref<OpenKey>& key)
{
    if (const Ref<OpenKey>* const predefined = Predefined(handle))
    {
        key = *predefined;
        return ERROR_SUCCESS;
    }
    DWORD access = 0;
    const Ref<Object> object = ObjectOf(handle, &access);
    if (!object || object->type != OpenKey::kObjectType)
        return ERROR_INVALID_HANDLE;
    if ((access & rights) != rights)
        return ERROR_ACCESS_DENIED;
    key = Ref<OpenKey>(static_cast<OpenKey*>(object.get()));
    return ERROR_SUCCESS;
}

LSTATUS AddOpenKey(const Ref<OpenKey>& key, REGSAM access, HKEY* handle)
{
    *handle = static_cast<HKEY>(AddHandle(key, SpecificRights(access)));
    return *handle != nullptr ? ERROR_SUCCESS : ERROR_NO_SYSTEM_RESOURCES;
}

LSTATUS ReadKey(HKEY handle, REGSAM rights, const std::function<LSTATUS(const RegistryKey&)>& reader)
{
    Ref<OpenKey> open;
    const LSTATUS status = FindOpenKey(handle, rights, open);
    if (status != ERROR_SUCCESS)
        return status;
    return open->hive.Read(
        [&](const RegistryKey& root) -> LSTATUS
        {
            const RegistryKey* const key = root.Find(open->path);
            return key != nullptr ? reader(*key) : ERROR_KEY_DELETED;
        });
}

LSTATUS ChangeKey(HKEY handle, REGSAM rights, const std::function<LSTATUS(RegistryKey&)>& changer)
{
    Ref<OpenKey> open;
    const LSTATUS status = FindOpenKey(handle, rights, open);
    if (status != ERROR_SUCCESS)
        return status;
    return open->hive.Change(
        [&](RegistryKey& root) -> LSTATUS
        {
            RegistryKey* const key = root.Find(open->path);
            return key != nullptr ? changer(*key) : ERROR_KEY_DELETED;
        });
}

} // namespace qxplatform
