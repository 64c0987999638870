#include "registry/output.h"

#include <winerror.h>

#include <cstring>

namespace qxplatform
{

LSTATUS CopyName(std::u16string_view name, LPWSTR buffer, LPDWORD size)
{
    if (size == nullptr)
        return ERROR_SUCCESS;
    if (buffer != nullptr)
    {
        if (*size <= name.size())
            return ERROR_MORE_DATA;
        std::memcpy(buffer, name.data(), name.size() * sizeof(char16_t));
        buffer[name.size()] = 0;
    }
    *size = static_cast<DWORD>(name.size());
    return ERROR_SUCCESS;
}

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

FILETIME LastWriteTimeOf(HKEY handle)
{
    Ref<OpenKey> key;
    return FindOpenKey(handle, 0, key) == ERROR_SUCCESS ? key->hive.LastWriteTime() : FILETIME{};
}

} // namespace qxplatform
