// The types, names and languages of a module's resources.

#include <libloaderapi.h>
#include <winbase.h>

#include "base/fail.h"
#include "resources/loaded_images.h"

using namespace qxplatform;

namespace
{

// Calls `visit` with one resource of each run of equal ones (according to `isSame`), until it returns false.
template <class IsSame, class Visit>
BOOL VisitEach(std::span<const Resource> resources, DWORD errorIfNone, IsSame isSame, Visit visit)
{
    if (resources.empty())
        return Fail(errorIfNone);
    const Resource* last = nullptr;
    for (const Resource& resource : resources)
    {
        if (last != nullptr && isSame(*last, resource))
            continue;
        last = &resource;
        if (!visit(resource))
            return Fail(ERROR_RESOURCE_ENUM_USER_STOP);
    }
    return TRUE;
}

} // namespace

BOOL WINAPI EnumResourceTypesW(HMODULE hModule, ENUMRESTYPEPROCW lpEnumFunc, LONG_PTR lParam)
{
    const std::shared_ptr<const ResourceImage> image = ImageOf(hModule);
    if (!image)
        return FALSE;
    return VisitEach(
        image->All(), ERROR_RESOURCE_DATA_NOT_FOUND,
        [](const Resource& a, const Resource& b) { return a.type == b.type; },
        [=](const Resource& resource)
        { return lpEnumFunc(hModule, const_cast<LPWSTR>(resource.type.ToCaller()), lParam); });
}

BOOL WINAPI EnumResourceNamesW(HMODULE hModule, LPCWSTR lpType, ENUMRESNAMEPROCW lpEnumFunc, LONG_PTR lParam)
{
    const std::shared_ptr<const ResourceImage> image = ImageOf(hModule);
    if (!image)
        return FALSE;
    return VisitEach(
        image->OfType(ResourceKey::FromCaller(lpType)), ERROR_RESOURCE_TYPE_NOT_FOUND,
        [](const Resource& a, const Resource& b) { return a.name == b.name; },
        [=](const Resource& resource)
        { return lpEnumFunc(hModule, lpType, const_cast<LPWSTR>(resource.name.ToCaller()), lParam); });
}

BOOL WINAPI EnumResourceLanguagesW(
    HMODULE hModule, LPCWSTR lpType, LPCWSTR lpName, ENUMRESLANGPROCW lpEnumFunc, LONG_PTR lParam)
{
    const std::shared_ptr<const ResourceImage> image = ImageOf(hModule);
    if (!image)
        return FALSE;
    const ResourceKey type = ResourceKey::FromCaller(lpType);
    const DWORD errorIfNone =
        image->OfType(type).empty() ? ERROR_RESOURCE_TYPE_NOT_FOUND : ERROR_RESOURCE_NAME_NOT_FOUND;
    return VisitEach(
        image->OfName(type, ResourceKey::FromCaller(lpName)), errorIfNone,
        [](const Resource& a, const Resource& b) { return a.language == b.language; },
        [=](const Resource& resource) { return lpEnumFunc(hModule, lpType, lpName, resource.language, lParam); });
}
