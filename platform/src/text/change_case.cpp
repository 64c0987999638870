// The functions that change the case of whole texts.

#include <winnls.h>
#include <winuser.h>

#include <unicode/utf16.h>

#include <climits>
#include <string_view>

#include "base/fail.h"
#include "text/casing.h"
#include "text/locale.h"

using namespace qxplatform;

namespace
{

bool IsSurrogatePair(const wchar_t* next, const wchar_t* end)
{
    return U16_IS_LEAD(*next) && end - next > 1 && U16_IS_TRAIL(next[1]);
}

// Maps each character. No mapping changes a character's plane, so texts keep their length and may be mapped in place.
template <class Map>
void MapCharacters(const wchar_t* next, const wchar_t* end, wchar_t* target, Map map)
{
    while (next != end)
    {
        if (!IsSurrogatePair(next, end))
        {
            *target++ = static_cast<wchar_t>(map(char32_t{*next++}));
            continue;
        }
        const char32_t mapped = map(static_cast<char32_t>(U16_GET_SUPPLEMENTARY(next[0], next[1])));
        *target++ = static_cast<wchar_t>(U16_LEAD(mapped));
        *target++ = static_cast<wchar_t>(U16_TRAIL(mapped));
        next += 2;
    }
}

LetterI LetterIOf(const Locale& locale)
{
    return locale.icu.starts_with("tr_") || locale.icu.starts_with("az_") ? LetterI::Turkic : LetterI::Latin;
}

int MapText(const Locale& locale, DWORD flags, std::wstring_view source, wchar_t* target, int size)
{
    if (size == 0)
        return static_cast<int>(source.size());
    if (static_cast<std::size_t>(size) < source.size())
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    const wchar_t* const begin = source.data();
    const wchar_t* const end = begin + source.size();
    const LetterI letterI = LetterIOf(locale);
    switch (flags)
    {
    case LCMAP_UPPERCASE:
        MapCharacters(begin, end, target, ToUpper);
        break;
    case LCMAP_LOWERCASE:
        MapCharacters(begin, end, target, ToLower);
        break;
    case LCMAP_UPPERCASE | LCMAP_LINGUISTIC_CASING:
        MapCharacters(begin, end, target, [letterI](char32_t c) { return ToUpperLinguistic(c, letterI); });
        break;
    case LCMAP_LOWERCASE | LCMAP_LINGUISTIC_CASING:
        MapCharacters(begin, end, target, [letterI](char32_t c) { return ToLowerLinguistic(c, letterI); });
        break;
    default:
        return Fail(ERROR_INVALID_FLAGS);
    }
    return static_cast<int>(source.size());
}

// `text` is a text to be changed in place, or a single character in place of the pointer.
template <class Map>
LPWSTR ChangeInPlace(LPWSTR text, Map map)
{
    const auto value = reinterpret_cast<UINT_PTR>(text);
    if (value <= 0xffff)
        return reinterpret_cast<LPWSTR>(static_cast<UINT_PTR>(map(static_cast<char32_t>(value))));
    MapCharacters(text, text + std::wstring_view(text).size(), text, map);
    return text;
}

int MapTextOf(const Locale* locale, DWORD flags, LPCWSTR source, int sourceLength, LPWSTR target, int targetSize)
{
    if (locale == nullptr || source == nullptr || sourceLength == 0 || targetSize < 0 ||
        (targetSize > 0 && target == nullptr))
        return Fail(ERROR_INVALID_PARAMETER);
    const std::size_t length =
        sourceLength < 0 ? std::wstring_view(source).size() + 1 : static_cast<std::size_t>(sourceLength);
    if (length > INT_MAX)
        return Fail(ERROR_INVALID_PARAMETER);
    return MapText(*locale, flags, {source, length}, target, targetSize);
}

} // namespace

LPWSTR WINAPI CharUpperW(LPWSTR lpsz)
{
    return ChangeInPlace(lpsz, ToUpper);
}

LPWSTR WINAPI CharLowerW(LPWSTR lpsz)
{
    return ChangeInPlace(lpsz, ToLower);
}

int WINAPI LCMapStringW(LCID Locale, DWORD dwMapFlags, LPCWSTR lpSrcStr, int cchSrc, LPWSTR lpDestStr, int cchDest)
{
    return MapTextOf(FindLocale(Locale), dwMapFlags, lpSrcStr, cchSrc, lpDestStr, cchDest);
}

// The last three arguments are reserved and must be 0.
int WINAPI LCMapStringEx(LPCWSTR lpLocaleName, DWORD dwMapFlags, LPCWSTR lpSrcStr, int cchSrc, LPWSTR lpDestStr,
    int cchDest, LPNLSVERSIONINFO lpVersionInformation, LPVOID lpReserved, LPARAM sortHandle)
{
    if (lpVersionInformation != nullptr || lpReserved != nullptr || sortHandle != 0)
        return Fail(ERROR_INVALID_PARAMETER);
    return MapTextOf(FindLocale(lpLocaleName), dwMapFlags, lpSrcStr, cchSrc, lpDestStr, cchDest);
}
