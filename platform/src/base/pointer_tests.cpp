#include <winbase.h>

#include "base/readable.h"

#include <cstdint>

#include <unistd.h>

using namespace qxplatform;

namespace
{

std::uintptr_t PageSize()
{
    static const std::uintptr_t size = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    return size;
}

bool IsBadRange(std::uintptr_t first, UINT_PTR size)
{
    if (size == 0)
        return false;
    const std::uintptr_t last = first + (size - 1);
    if (first == 0 || last < first)
        return true;
    const std::uintptr_t lastPage = last / PageSize();
    for (std::uintptr_t page = first / PageSize();; ++page)
    {
        const std::uintptr_t begin = page * PageSize();
        if (!IsReadable(begin > first ? begin : first))
            return true;
        if (page == lastPage)
            return false;
    }
}

} // namespace

// Reads arbitrary memory, which the sanitizers must not report.
__attribute__((no_sanitize("address", "undefined"))) BOOL WINAPI IsBadStringPtrW(LPCWSTR lpsz, UINT_PTR ucchMax)
{
    std::uintptr_t address = reinterpret_cast<std::uintptr_t>(lpsz);
    std::uintptr_t checkedEnd = 0;
    for (UINT_PTR index = 0; index < ucchMax; ++index, address += sizeof(WCHAR))
    {
        // A character at an odd address may span two pages.
        const std::uintptr_t last = address + sizeof(WCHAR) - 1;
        if (last >= checkedEnd)
        {
            if (IsBadRange(address, sizeof(WCHAR)))
                return TRUE;
            checkedEnd = (last / PageSize() + 1) * PageSize();
        }
        WCHAR character;
        __builtin_memcpy(&character, reinterpret_cast<const void*>(address), sizeof character);
        if (character == 0)
            return FALSE;
    }
    return FALSE;
}
