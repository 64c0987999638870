// Finding a module's resources, their bytes and their size.

#include <libloaderapi.h>
#include <winbase.h>
#include <winnt.h>

#include "base/fail.h"
#include "resources/loaded_images.h"
#include "resources/resource_language.h"

using namespace qxplatform;

namespace
{

// Finds a resource. On failure, the last error says which of type, name and language doesn't exist.
const Resource* Find(const ResourceImage& image, const ResourceKey& type, const ResourceKey& name, LANGID language)
{
    const std::span<const Resource> languages = image.OfName(type, name);
    if (languages.empty())
    {
        Fail(image.OfType(type).empty() ? ERROR_RESOURCE_TYPE_NOT_FOUND : ERROR_RESOURCE_NAME_NOT_FOUND);
        return nullptr;
    }
    const Resource* const found = ChooseLanguage(languages, language);
    if (found == nullptr)
        Fail(ERROR_RESOURCE_LANG_NOT_FOUND);
    return found;
}

} // namespace

HRSRC WINAPI FindResourceExW(HMODULE hModule, LPCWSTR lpType, LPCWSTR lpName, WORD wLanguage)
{
    const std::shared_ptr<const ResourceImage> image = ImageOf(hModule);
    const Resource* const found =
        image ? Find(*image, ResourceKey::FromCaller(lpType), ResourceKey::FromCaller(lpName), wLanguage) : nullptr;
    return found != nullptr ? HandleOf(*found) : nullptr;
}

HRSRC WINAPI FindResourceW(HMODULE hModule, LPCWSTR lpName, LPCWSTR lpType)
{
    return FindResourceExW(hModule, lpType, lpName, MAKELANGID(LANG_NEUTRAL, SUBLANG_NEUTRAL));
}

HGLOBAL WINAPI LoadResource(HMODULE, HRSRC hResInfo)
{
    const std::optional<Resource> resource = ResourceOf(hResInfo);
    return resource ? const_cast<std::byte*>(resource->data.data()) : nullptr;
}

// A loaded resource already is a pointer to its bytes.
LPVOID WINAPI LockResource(HGLOBAL hResData)
{
    return hResData;
}

DWORD WINAPI SizeofResource(HMODULE, HRSRC hResInfo)
{
    const std::optional<Resource> resource = ResourceOf(hResInfo);
    return resource ? static_cast<DWORD>(resource->data.size()) : 0;
}
