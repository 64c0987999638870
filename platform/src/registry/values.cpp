// Reading, setting and deleting values.
#include "base/text.h"
#include "registry/open_key.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

using namespace qxplatform;

namespace
{

// A null name refers to the unnamed value.
std::u16string_view ValueName(LPCWSTR name)
{
    return name != nullptr ? View(name) : std::u16string_view();
}

// Returns type and data as requested. `size` is the size of the buffer on input and of the data on output. If the
// buffer is too small, returns ERROR_MORE_DATA with the size and the type only. Without a buffer, returns success with
// the size.
LSTATUS CopyValue(const RegistryValue& value, LPDWORD type, LPBYTE data, LPDWORD size)
{
    if (type != nullptr)
        *type = value.type;
    if (size == nullptr)
        return ERROR_SUCCESS;
    const DWORD available = *size;
    *size = static_cast<DWORD>(value.data.size());
    if (data == nullptr)
        return ERROR_SUCCESS;
    if (available < value.data.size())
        return ERROR_MORE_DATA;
    if (!value.data.empty())
        std::memcpy(data, value.data.data(), value.data.size());
    return ERROR_SUCCESS;
}

} // namespace

LSTATUS WINAPI RegQueryValueExW(HKEY handle, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size)
{
    if (reserved != nullptr || (data != nullptr && size == nullptr))
        return ERROR_INVALID_PARAMETER;
    return ReadKey(handle, KEY_QUERY_VALUE,
        [&](const RegistryKey& key) -> LSTATUS
        {
            const RegistryValue* const value = key.FindValue(ValueName(name));
            return value != nullptr ? CopyValue(*value, type, data, size) : ERROR_FILE_NOT_FOUND;
        });
}

LSTATUS WINAPI RegSetValueExW(HKEY handle, LPCWSTR name, DWORD, DWORD type, const BYTE* data, DWORD size)
{
    if (data == nullptr && size != 0)
        return ERROR_NOACCESS;
    const std::u16string_view valueName = ValueName(name);
    if (valueName.size() > kMaxValueName)
        return ERROR_INVALID_PARAMETER;
    return ChangeKey(handle, KEY_SET_VALUE,
        [&](RegistryKey& key) -> LSTATUS
        {
            const RegistryValue* const old = key.FindValue(valueName);
            if (old != nullptr && old->type == type &&
                std::equal(old->data.begin(), old->data.end(), data, data + size))
                return Hive::kUnchanged;
            RegistryValue& value = key.EnsureValue(valueName);
            value.type = type;
            value.data.assign(data, data + size);
            return ERROR_SUCCESS;
        });
}

LSTATUS WINAPI RegDeleteValueW(HKEY handle, LPCWSTR name)
{
    // Checked first, so that nothing is written, not even the lock file, if the value doesn't exist.
    const LSTATUS status = ReadKey(handle, KEY_SET_VALUE,
        [&](const RegistryKey& key) -> LSTATUS
        { return key.FindValue(ValueName(name)) != nullptr ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND; });
    if (status != ERROR_SUCCESS)
        return status;
    return ChangeKey(handle, KEY_SET_VALUE,
        [&](RegistryKey& key) -> LSTATUS
        { return key.values.erase(FoldName(ValueName(name))) != 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND; });
}
