// Comparison of texts by the rules of a locale.

#include <stringapiset.h>
#include <winnls.h>

#include <algorithm>
#include <climits>
#include <vector>

#include "base/fail.h"
#include "text/casing.h"
#include "text/collation.h"
#include "text/locale.h"

using namespace qxplatform;

namespace
{

constexpr DWORD kOfferedFlags = NORM_IGNORECASE | SORT_STRINGSORT | LOCALE_USE_CP_ACP;

std::wstring_view TextOf(LPCWSTR text, int length)
{
    return length < 0 ? std::wstring_view(text) : std::wstring_view(text, static_cast<std::size_t>(length));
}

// Ignores only case. Width, kana and accents remain significant, unlike with a lower collation strength.
std::vector<wchar_t> Fold(std::wstring_view text)
{
    std::vector<wchar_t> folded(text.size());
    std::transform(
        text.begin(), text.end(), folded.begin(), [](wchar_t unit) { return static_cast<wchar_t>(ToLower(unit)); });
    return folded;
}

} // namespace

int WINAPI CompareStringW(
    LCID Locale, DWORD dwCmpFlags, PCNZWCH lpString1, int cchCount1, PCNZWCH lpString2, int cchCount2)
{
    const qxplatform::Locale* const locale = FindLocale(Locale);
    if (locale == nullptr || lpString1 == nullptr || lpString2 == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    if ((dwCmpFlags & ~kOfferedFlags) != 0)
        return Fail(ERROR_INVALID_FLAGS);
    const std::wstring_view a = TextOf(lpString1, cchCount1);
    const std::wstring_view b = TextOf(lpString2, cchCount2);
    if (a.size() > INT_MAX || b.size() > INT_MAX)
        return Fail(ERROR_INVALID_PARAMETER);
    if (a == b)
        return CSTR_EQUAL;
    const Signs signs = (dwCmpFlags & SORT_STRINGSORT) != 0 ? Signs::StringSort : Signs::WordSort;
    int order = 0;
    if ((dwCmpFlags & NORM_IGNORECASE) != 0)
    {
        const std::vector<wchar_t> foldedA = Fold(a);
        const std::vector<wchar_t> foldedB = Fold(b);
        order = Collate(*locale, signs, {foldedA.data(), foldedA.size()}, {foldedB.data(), foldedB.size()});
    }
    else
    {
        order = Collate(*locale, signs, a, b);
    }
    return order < 0 ? CSTR_LESS_THAN : order > 0 ? CSTR_GREATER_THAN : CSTR_EQUAL;
}
