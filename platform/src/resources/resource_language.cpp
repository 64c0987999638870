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

// A language with its region, then the language alone.
const Resource* FindEither(std::span<const Resource> languages, LANGID wanted)
{
    const Resource* const exact = FindLanguage(languages, wanted);
    return exact != nullptr ? exact : FindLanguage(languages, WithoutRegion(wanted));
}

} // namespace

// A language that is named is the only one that will do, but for the same without a region, and for a resource of no
// language. A default stands for the languages of the user, then English, then whatever there is.
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
