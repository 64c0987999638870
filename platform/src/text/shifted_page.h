// 7-bit code pages that switch character sets with escape sequences: ISO 2022 and HZ.
#pragma once

#include "text/table_page.h"

namespace qxplatform
{

enum class CharacterSet
{
    Ascii,
    DoubleByte,
    Katakana
};

struct ShiftSequence
{
    std::string_view bytes;
    CharacterSet set;
};

struct ShiftRules
{
    std::array<ShiftSequence, 8> readable; // an empty sequence ends the list
    std::string_view toAscii;              // written to return to ASCII, also at the end of a text
    std::string_view toDoubleByte;
    std::string_view toKatakana; // empty if half-width katakana are written as full-width ones
    std::string_view header;     // precedes every text
    bool tildeEscapes = false;   // "~~" is a tilde, and "~" before a line feed joins lines
};

extern const ShiftRules ISO_2022_JP;           // page 50220
extern const ShiftRules ISO_2022_JP_KATAKANA;  // page 50221
extern const ShiftRules ISO_2022_JP_SHIFT_OUT; // page 50222
extern const ShiftRules ISO_2022_KR;           // page 50225
extern const ShiftRules HZ;                    // page 52936

class ShiftedPage final : public CodePage
{
public:
    // `plane` contains the sets in their EUC form.
    ShiftedPage(const ShiftRules& rules, PageTables plane);

    bool Decode(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const override;
    EncodeResult Encode(std::wstring_view text, const Encoding& encoding, ByteOutput& out) const override;
    DWORD DecodeFlags() const override { return 0; }
    DWORD EncodeFlags() const override { return 0; }

private:
    const ShiftSequence* FindShift(std::string_view bytes) const;
    std::string_view ShiftTo(CharacterSet set) const;
    wchar_t Pair(unsigned lead, unsigned trail) const;

    const ShiftRules& _rules;
    const PageTables _plane;
    const CharacterSet _eightBitSet; // for bytes from 0x80 on outside any shift, which are invalid
};

} // namespace qxplatform
