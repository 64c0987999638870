#include "core/charset/charset_names.h"

#include "core/text/string.h"

#include <windows.h>

#include <cstdint>
#include <iterator>

namespace qx
{

namespace
{

struct scCharset
{
    const wchar_t* name;
    std::uint32_t codePage;
};

// The first match wins, so the second entries for iso-8859-1 and iso-2022-jp are never used.
constexpr scCharset kCharsets[] = {
    {L"windows-1250", 1250},
    {L"windows-1251", 1251},
    {L"windows-1253", 1253},
    {L"windows-1254", 1254},
    {L"windows-1255", 1255},
    {L"windows-1256", 1256},
    {L"windows-1257", 1257},
    {L"windows-1258", 1258},
    {L"iso-8859-1", 1252},
    {L"iso-8859-1", 28591},
    {L"iso-8859-2", 28592},
    {L"iso-8859-3", 28593},
    {L"iso-8859-4", 28594},
    {L"iso-8859-5", 28595},
    {L"iso-8859-6", 28596},
    {L"iso-8859-7", 28597},
    {L"iso-8859-8", 28598},
    {L"unicode", 1200},
    {L"unicodeFEFF", 1201},
    {L"utf-7", 65000},
    {L"utf-8", 65001},
    {L"iso-2022-jp", 50220},
    {L"iso-2022-jp", 50222},
    {L"iso-2022-kr", 50225},
    {L"DIN_66003", 20106},
    {L"NS_4551-1", 20108},
    {L"SEN_850200_B", 20107},
    {L"_autodetect", 50932},
    {L"_autodetect_kr", 50949},
    {L"big5", 950},
    {L"csISO2022JP", 50221},
    {L"euc-kr", 51949},
    {L"gb2312", 936},
    {L"hz-gb-2312", 52936},
    {L"ibm852", 852},
    {L"ibm866", 866},
    {L"irv", 20105},
    {L"koi8-r", 20866},
    {L"ks_c_5601", 949},
    {L"shift-jis", 932},
    {L"windows-874", 874},
    {L"x-euc", 51932},
    {L"x-user-defined", 50000},
};
static_assert(std::size(kCharsets) == 43);

} // namespace

std::uint32_t CharsetNameToCodePage(const IString& name)
{
    for (const scCharset& charset : kCharsets)
    {
        if (name.Compare(charset.name, -1) == 0)
        {
            return charset.codePage;
        }
    }
    return GetACP();
}

} // namespace qx
