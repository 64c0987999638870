#include <fileapi.h>
#include <stdlib.h>

#include <cerrno>

wchar_t* _wfullpath(wchar_t* fullPath, const wchar_t* path, std::size_t size)
{
    if (!path || !*path)
        path = L".";
    const DWORD needed = GetFullPathNameW(path, 0, nullptr, nullptr);
    if (needed == 0)
    {
        errno = EINVAL;
        return nullptr;
    }
    if (fullPath && size < needed)
    {
        errno = ERANGE;
        return nullptr;
    }
    wchar_t* target = fullPath ? fullPath : static_cast<wchar_t*>(malloc(needed * sizeof(wchar_t)));
    if (target && GetFullPathNameW(path, needed, target, nullptr) == 0)
        *target = 0;
    return target;
}
