// What a key's handle stands for: the place of a key in its hive.
#pragma once

#include "base/handle_table.h"
#include "registry/hive.h"

#include <winreg.h>

namespace qxplatform
{

// The key itself is looked up by its path at each call, since another process may have changed the hive meanwhile. A
// path that leads nowhere any more is that of a deleted key; one that was made again is open again.
class OpenKey final : public Object
{
public:
    static constexpr ObjectType kObjectType = ObjectType::RegistryKey;

    OpenKey(Hive& keyHive, KeyPath keyPath) : Object(kObjectType), hive(keyHive), path(std::move(keyPath)) {}

    Hive& hive;
    const KeyPath path;
};

// The open key behind a handle, a predefined one included, with ERROR_INVALID_HANDLE if there is none, and
// ERROR_ACCESS_DENIED if it wasn't opened with all of the rights.
LSTATUS FindOpenKey(HKEY handle, REGSAM rights, Ref<OpenKey>& key);

// A new handle with the specific rights that `access` asks for.
LSTATUS AddOpenKey(const Ref<OpenKey>& key, REGSAM access, HKEY* handle);

bool IsPredefined(HKEY handle);

// The functions of the key of a handle. Both give ERROR_KEY_DELETED for one that isn't there any more.
LSTATUS ReadKey(HKEY handle, REGSAM rights, const std::function<LSTATUS(const RegistryKey& key)>& reader);
LSTATUS ChangeKey(HKEY handle, REGSAM rights, const std::function<LSTATUS(RegistryKey& key)>& changer);

} // namespace qxplatform
