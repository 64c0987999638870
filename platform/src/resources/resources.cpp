#include <libloaderapi.h>

#include "base/fail.h"
#include "base/text.h"
#include "resources/image.h"

#include <winnls.h>
#include <winnt.h>
#include <winuser.h>

#include <algorithm>
#include <cstring>

using namespace qxplatform;

namespace
{

constexpr LANGID english = MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);

// The languages that stand in for the one asked for, the best first.
std::vector<LANGID> LanguagesFor(LANGID language)
{
    if (PRIMARYLANGID(language) != LANG_NEUTRAL)
        return {language, MAKELANGID(PRIMARYLANGID(language), SUBLANG_NEUTRAL), 0};
    const LANGID thread = LANGIDFROMLCID(GetThreadLocale());
    const LANGID user = GetUserDefaultLangID();
    const LANGID system = GetSystemDefaultLangID();
    return {0, thread, static_cast<LANGID>(PRIMARYLANGID(thread)), user, static_cast<LANGID>(PRIMARYLANGID(user)),
        system, static_cast<LANGID>(PRIMARYLANGID(system)), english};
}

// The error tells at which of the three levels the search ended.
std::optional<Resource> Find(HMODULE module, LPCWSTR type, LPCWSTR name, LANGID language)
{
    std::vector<Resource> resources = ResourcesOf(module);
    const auto keep = [&resources](auto predicate)
    {
        std::erase_if(resources, [&](const Resource& resource) { return !predicate(resource); });
        return !resources.empty();
    };
    DWORD error = ERROR_RESOURCE_DATA_NOT_FOUND;
    if (!resources.empty())
    {
        error = ERROR_RESOURCE_TYPE_NOT_FOUND;
        if (keep([sought = ResourceName::Of(type)](const Resource& r) { return r.type == sought; }))
        {
            error = ERROR_RESOURCE_NAME_NOT_FOUND;
            if (keep([sought = ResourceName::Of(name)](const Resource& r) { return r.name == sought; }))
                error = ERROR_RESOURCE_LANG_NOT_FOUND;
        }
    }
    for (const LANGID tried : LanguagesFor(language))
    {
        const auto found = std::find_if(resources.begin(), resources.end(),
            [tried](const Resource& resource) { return resource.language == tried; });
        if (found != resources.end())
            return *found;
    }
    // Who asks for no language gets any.
    if (!resources.empty() && PRIMARYLANGID(language) == LANG_NEUTRAL)
        return resources.front();
    Fail(error);
    return std::nullopt;
}

std::optional<Resource> ResourceOf(const void* entry)
{
    if (entry == nullptr)
    {
        Fail(ERROR_RESOURCE_DATA_NOT_FOUND);
        return std::nullopt;
    }
    // The entry was read whole when it was found, so its own sizes bound it.
    const auto* at = static_cast<const std::byte*>(entry);
    DWORD sizes[2];
    std::memcpy(sizes, at, sizeof(sizes));
    return ReadResource(at, at + sizes[0] + sizes[1]);
}

// One of the 16 texts of a block, each behind its length.
std::optional<std::u16string_view> TextOfBlock(const Resource& block, unsigned index)
{
    const auto* units = reinterpret_cast<const char16_t*>(block.data);
    const std::size_t count = block.size / sizeof(char16_t);
    for (std::size_t at = 0; at < count; at += 1u + units[at], --index)
    {
        if (units[at] > count - at - 1)
            return std::nullopt;
        if (index == 0)
            return std::u16string_view(units + at + 1, units[at]);
    }
    return std::nullopt;
}

} // namespace

HRSRC WINAPI FindResourceExW(HMODULE hModule, LPCWSTR lpType, LPCWSTR lpName, WORD wLanguage)
{
    const std::optional<Resource> found = Find(hModule, lpType, lpName, wLanguage);
    return found ? reinterpret_cast<HRSRC>(const_cast<std::byte*>(found->entry)) : nullptr;
}

HRSRC WINAPI FindResourceW(HMODULE hModule, LPCWSTR lpName, LPCWSTR lpType)
{
    return FindResourceExW(hModule, lpType, lpName, MAKELANGID(LANG_NEUTRAL, SUBLANG_NEUTRAL));
}

HGLOBAL WINAPI LoadResource(HMODULE, HRSRC hResInfo)
{
    const std::optional<Resource> resource = ResourceOf(hResInfo);
    return resource ? const_cast<std::byte*>(resource->data) : nullptr;
}

LPVOID WINAPI LockResource(HGLOBAL hResData)
{
    return hResData;
}

DWORD WINAPI SizeofResource(HMODULE, HRSRC hResInfo)
{
    const std::optional<Resource> resource = ResourceOf(hResInfo);
    return resource ? resource->size : 0;
}

int WINAPI LoadStringW(HINSTANCE hInstance, UINT uID, LPWSTR lpBuffer, int cchBufferMax)
{
    if (lpBuffer == nullptr || cchBufferMax < 0)
        return Fail(ERROR_INVALID_PARAMETER);
    if (cchBufferMax > 0)
        *lpBuffer = 0;
    const std::optional<Resource> block =
        Find(hInstance, reinterpret_cast<LPCWSTR>(RT_STRING), MAKEINTRESOURCEW(uID / 16 + 1), 0);
    const std::optional<std::u16string_view> text = block ? TextOfBlock(*block, uID % 16) : std::nullopt;
    if (!text)
        return block ? Fail(ERROR_RESOURCE_NAME_NOT_FOUND) : 0;
    if (cchBufferMax == 0)
    {
        // A buffer of no characters is a place for the address of the text itself, which has no terminator.
        const char16_t* address = text->data();
        std::memcpy(lpBuffer, &address, sizeof(address));
        return static_cast<int>(text->size());
    }
    const std::u16string copied(text->substr(0, static_cast<std::size_t>(cchBufferMax) - 1));
    return static_cast<int>(CopyOut(copied, lpBuffer, static_cast<DWORD>(cchBufferMax)));
}
