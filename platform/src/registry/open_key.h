// The object behind a key handle: the location of a key in its hive.
#pragma once

#include "base/handle_table.h"
#include "registry/hive.h"

#include <winreg.h>

namespace qxplatform
{

// The key is looked up by its path in each call, because other processes may have changed the hive. If the path no
// longer exists, the key has been deleted; if the key is created again, the handle becomes valid again.
class OpenKey final : public Object
{
public:
    static constexpr ObjectType kObjectType = ObjectType::RegistryKey;

    OpenKey(Hive& keyHive, KeyPath keyPath) : Object(kObjectType), hive(keyHive), path(std::move(keyPath)) {}

    Hive& hive;
    const KeyPath path;
};

// Returns the open key behind a handle, including predefined ones. ERROR_INVALID_HANDLE if there is none;
// ERROR_ACCESS_DENIED if it lacks one of the rights.
LSTATUS FindOpenKey(HKEY handle, REGSAM rights, Ref<OpenKey>& key);

// Creates a handle with the specific rights requested by `access`.
LSTATUS AddOpenKey(const Ref<OpenKey>& key, REGSAM access, HKEY* handle);

bool IsPredefined(HKEY handle);

// Access the key of a handle. Both return ERROR_KEY_DELETED if the key no longer exists.
LSTATUS ReadKey(HKEY handle, REGSAM rights, const std::function<LSTATUS(const RegistryKey& key)>& reader);
LSTATUS ChangeKey(HKEY handle, REGSAM rights, const std::function<LSTATUS(RegistryKey& key)>& changer);

} // namespace qxplatform
