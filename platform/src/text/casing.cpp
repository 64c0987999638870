#include "text/casing.h"

#include <unicode/uchar.h>

namespace qxplatform
{

namespace
{

constexpr char32_t kDottedCapitalI = 0x0130;
constexpr char32_t kDotlessSmallI = 0x0131;

char32_t IcuUpper(char32_t character)
{
    return static_cast<char32_t>(u_toupper(static_cast<UChar32>(character)));
}

char32_t IcuLower(char32_t character)
{
    return static_cast<char32_t>(u_tolower(static_cast<UChar32>(character)));
}

} // namespace

char32_t ToUpper(char32_t character)
{
    if (character < 0x80)
        return character >= 'a' && character <= 'z' ? character - 0x20 : character;
    const char32_t upper = IcuUpper(character);
    return IcuLower(upper) == character ? upper : character;
}

char32_t ToLower(char32_t character)
{
    if (character < 0x80)
        return character >= 'A' && character <= 'Z' ? character + 0x20 : character;
    const char32_t lower = IcuLower(character);
    return IcuUpper(lower) == character ? lower : character;
}

char32_t ToUpperLinguistic(char32_t character, LetterI letterI)
{
    return letterI == LetterI::Turkic && character == 'i' ? kDottedCapitalI : IcuUpper(character);
}

char32_t ToLowerLinguistic(char32_t character, LetterI letterI)
{
    return letterI == LetterI::Turkic && character == 'I' ? kDotlessSmallI : IcuLower(character);
}

} // namespace qxplatform
