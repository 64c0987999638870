// The named entities that the markup conversions support: the Latin-1 set of HTML 4 and six more.
#pragma once

#include <array>
#include <string_view>

namespace qx
{

struct HtmlEntity
{
    wchar_t code;
    std::wstring_view text; // with ampersand and semicolon
};

constexpr wchar_t kFirstLatin1Entity = 160;

// Rows 0 to 95 have the codes 160 to 255 in order. "&euro;" has the code of the euro sign in code page 1252.
// clang-format off
inline constexpr std::array<HtmlEntity, 102> kHtmlEntities = {{
    {160, L"&nbsp;"}, {161, L"&iexcl;"}, {162, L"&cent;"}, {163, L"&pound;"}, {164, L"&curren;"}, {165, L"&yen;"},
    {166, L"&brvbar;"}, {167, L"&sect;"}, {168, L"&uml;"}, {169, L"&copy;"}, {170, L"&ordf;"}, {171, L"&laquo;"},
    {172, L"&not;"}, {173, L"&shy;"}, {174, L"&reg;"}, {175, L"&macr;"}, {176, L"&deg;"}, {177, L"&plusmn;"},
    {178, L"&sup2;"}, {179, L"&sup3;"}, {180, L"&acute;"}, {181, L"&micro;"}, {182, L"&para;"}, {183, L"&middot;"},
    {184, L"&cedil;"}, {185, L"&sup1;"}, {186, L"&ordm;"}, {187, L"&raquo;"}, {188, L"&frac14;"}, {189, L"&frac12;"},
    {190, L"&frac34;"}, {191, L"&iquest;"}, {192, L"&Agrave;"}, {193, L"&Aacute;"}, {194, L"&Acirc;"}, {195, L"&Atilde;"},
    {196, L"&Auml;"}, {197, L"&Aring;"}, {198, L"&AElig;"}, {199, L"&Ccedil;"}, {200, L"&Egrave;"}, {201, L"&Eacute;"},
    {202, L"&Ecirc;"}, {203, L"&Euml;"}, {204, L"&Igrave;"}, {205, L"&Iacute;"}, {206, L"&Icirc;"}, {207, L"&Iuml;"},
    {208, L"&ETH;"}, {209, L"&Ntilde;"}, {210, L"&Ograve;"}, {211, L"&Oacute;"}, {212, L"&Ocirc;"}, {213, L"&Otilde;"},
    {214, L"&Ouml;"}, {215, L"&times;"}, {216, L"&Oslash;"}, {217, L"&Ugrave;"}, {218, L"&Uacute;"}, {219, L"&Ucirc;"},
    {220, L"&Uuml;"}, {221, L"&Yacute;"}, {222, L"&THORN;"}, {223, L"&szlig;"}, {224, L"&agrave;"}, {225, L"&aacute;"},
    {226, L"&acirc;"}, {227, L"&atilde;"}, {228, L"&auml;"}, {229, L"&aring;"}, {230, L"&aelig;"}, {231, L"&ccedil;"},
    {232, L"&egrave;"}, {233, L"&eacute;"}, {234, L"&ecirc;"}, {235, L"&euml;"}, {236, L"&igrave;"}, {237, L"&iacute;"},
    {238, L"&icirc;"}, {239, L"&iuml;"}, {240, L"&eth;"}, {241, L"&ntilde;"}, {242, L"&ograve;"}, {243, L"&oacute;"},
    {244, L"&ocirc;"}, {245, L"&otilde;"}, {246, L"&ouml;"}, {247, L"&divide;"}, {248, L"&oslash;"}, {249, L"&ugrave;"},
    {250, L"&uacute;"}, {251, L"&ucirc;"}, {252, L"&uuml;"}, {253, L"&yacute;"}, {254, L"&thorn;"}, {255, L"&yuml;"},
    {38, L"&amp;"}, {34, L"&quot;"}, {60, L"&lt;"}, {62, L"&gt;"}, {128, L"&euro;"}, {39, L"&apos;"},
}};
// clang-format on

// Returns the entity with this text, compared case-sensitively, or null.
const HtmlEntity* FindHtmlEntity(std::wstring_view text);

} // namespace qx
