#include "resources/resource_language.h"

#include <winnls.h>
#include <winnt.h>

namespace qxplatform
{

namespace
{

const Resource* FindLanguage(std::span<const Resource> languages, LANGID wanted)
{
    for (const Resource& resource : languages)
        if (resource.language == wanted)
            return &resource;
    return nullptr;
}

LANGID WithoutRegion(LANGID language)
{
    return MAKELANGID(PRIMARYLANGID(language), SUBLANG_NEUTRAL);
}

// Looks up a language with its region, then the language alone.
const Resource* FindEither(std::span<const Resource> languages, LANGID wanted)
{
    const Resource* const exact = FindLanguage(languages, wanted);
    return exact != nullptr ? exact : FindLanguage(languages, WithoutRegion(wanted));
}

} // namespace

// A specific language matches only itself, the same language without a region, and a language-neutral resource. A
// default language selects the user's languages, then English, then any language.
const Resource* ChooseLanguage(std::span<const Resource> languages, LANGID wanted)
{
    if (PRIMARYLANGID(wanted) != LANG_NEUTRAL)
    {
        const Resource* const found = FindEither(languages, wanted);
        return found != nullptr ? found : FindLanguage(languages, LANG_NEUTRAL);
    }
    const LANGID defaults[] = {
        GetUserDefaultUILanguage(), GetUserDefaultLangID(), LANG_NEUTRAL, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US)};
    for (const LANGID language : defaults)
        if (const Resource* const found = FindEither(languages, language))
            return found;
    return languages.empty() ? nullptr : &languages.front();
}

} // namespace qxplatform
