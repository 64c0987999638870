#include "text/collation.h"

#include <unicode/ucol.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/forever.h"

namespace qxplatform
{

namespace
{

// Rules for the differences between the system's order and ICU's root: ASCII symbols are in code order, followed by the
// mathematical ones, and ligatures equal the letters they join. Rules of the locale follow these and take precedence.
constexpr const char16_t* kSystemRules =
    u"&' '<''''<'-'<'!'<'\"'<'#'<'$'<'%'<'&'<'('<')'<'*'<','<'.'<'/'<':'<';'<'?'<'@'"
    u"<'['<\\\\<']'<'^'<'_'<'`'<'{'<'|'<'}'<'~'<'+'<'<'<'='<'>'"
    u"&ss=ß&ae=æ&AE=Æ&oe=œ&OE=Œ&th=þ&TH=Þ";

struct CloseCollator
{
    void operator()(UCollator* collator) const { ucol_close(collator); }
};
using Collator = std::unique_ptr<UCollator, CloseCollator>;

Collator OpenRules(const std::u16string& rules)
{
    UErrorCode status = U_ZERO_ERROR;
    Collator collator(ucol_openRules(
        rules.c_str(), static_cast<std::int32_t>(rules.size()), UCOL_ON, UCOL_TERTIARY, nullptr, &status));
    return U_SUCCESS(status) ? std::move(collator) : nullptr;
}

Collator MakeCollator(const std::string& icuLocale)
{
    UErrorCode status = U_ZERO_ERROR;
    const Collator own(ucol_open(icuLocale.c_str(), &status));
    std::u16string rules = kSystemRules;
    if (own != nullptr)
    {
        std::int32_t length = 0;
        const UChar* const tailoring = ucol_getRules(own.get(), &length);
        rules.append(tailoring, static_cast<std::size_t>(length));
    }
    Collator collator = OpenRules(rules);
    return collator != nullptr ? std::move(collator) : OpenRules(kSystemRules);
}

// Several threads may use a collator at once as long as nobody changes its attributes.
const UCollator* CollatorOf(const Locale& locale)
{
    struct Known
    {
        Mutex mutex;
        std::map<std::string, Collator> collators;
    };
    static constinit Forever<Known> theKnown;
    Known& known = theKnown.Get();
    const std::lock_guard lock(known.mutex);
    const auto [entry, isNew] = known.collators.try_emplace(locale.icu);
    if (isNew)
        entry->second = MakeCollator(locale.icu);
    return entry->second.get();
}

int CompareWith(const UCollator* collator, std::wstring_view a, std::wstring_view b)
{
    if (collator == nullptr)
        return a.compare(b); // without ICU's data there is no better order
    return ucol_strcoll(collator, reinterpret_cast<const UChar*>(a.data()), static_cast<std::int32_t>(a.size()),
        reinterpret_cast<const UChar*>(b.data()), static_cast<std::int32_t>(b.size()));
}

bool IsMinorSign(wchar_t unit)
{
    return unit == L'\'' || unit == L'-';
}

// A text without its hyphens and apostrophes, and their positions.
struct Words
{
    struct Sign
    {
        std::size_t position; // in the text without these symbols
        wchar_t unit;
    };

    explicit Words(std::wstring_view whole)
    {
        units.reserve(whole.size());
        for (const wchar_t unit : whole)
        {
            if (IsMinorSign(unit))
                signs.push_back({units.size(), unit});
            else
                units.push_back(unit);
        }
    }

    std::wstring_view Text() const { return {units.data(), units.size()}; }

    std::vector<wchar_t> units;
    std::vector<Sign> signs;
};

// A text with a symbol sorts after a text without one. A symbol at an earlier position sorts after a symbol at a later
// position, and a hyphen sorts after an apostrophe.
int CompareSigns(const std::vector<Words::Sign>& a, const std::vector<Words::Sign>& b)
{
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i)
    {
        if (a[i].position != b[i].position)
            return a[i].position < b[i].position ? 1 : -1;
        if (a[i].unit != b[i].unit)
            return a[i].unit == L'-' ? 1 : -1;
    }
    return static_cast<int>(a.size() > common) - static_cast<int>(b.size() > common);
}

} // namespace

int Collate(const Locale& locale, Signs signs, std::wstring_view a, std::wstring_view b)
{
    const UCollator* const collator = CollatorOf(locale);
    const bool hasSigns = std::any_of(a.begin(), a.end(), IsMinorSign) || std::any_of(b.begin(), b.end(), IsMinorSign);
    if (signs == Signs::StringSort || !hasSigns)
        return CompareWith(collator, a, b);
    const Words wordsA(a);
    const Words wordsB(b);
    const int order = CompareWith(collator, wordsA.Text(), wordsB.Text());
    return order != 0 ? order : CompareSigns(wordsA.signs, wordsB.signs);
}

} // namespace qxplatform
