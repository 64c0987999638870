// Code pages of one or two bytes a character, held as tables in both directions.
#pragma once

#include <array>
#include <vector>

#include "text/code_page.h"

namespace qxplatform
{

// What a page means, as gathered by its maker. Codes of two bytes have the lead in the high byte.
struct PageTables
{
    static constexpr wchar_t UNDEFINED = 0xffff;
    static constexpr std::size_t UNITS = 0x10000;

    std::array<wchar_t, 256> single{}; // for a lead byte: UNDEFINED
    std::array<bool, 256> strict{};    // bytes that are refused when invalid bytes are
    std::array<bool, 256> lead{};      //
    std::vector<wchar_t> pairs;        // [code - 0x8000], empty in a page without lead bytes
    std::vector<std::uint16_t> exact;  // code by unit; 0 for none, but for U+0000
    std::vector<std::uint16_t> fitted; // the same with best fits
    wchar_t undefinedCharacter = L'?'; // for bytes that mean nothing
    bool asciiTransparent = true;
};

class TablePage final : public CodePage
{
public:
    explicit TablePage(PageTables tables) : _tables(std::move(tables)) {}

    bool Decode(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const override;
    EncodeResult Encode(std::wstring_view text, const Encoding& encoding, ByteOutput& out) const override;
    DWORD DecodeFlags() const override;
    DWORD EncodeFlags() const override;
    bool IsLeadByte(unsigned char byte) const override { return _tables.lead[byte]; }

    const PageTables& Tables() const { return _tables; }

private:
    bool DecodeSingle(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const;
    bool DecodeDouble(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const;

    const PageTables _tables;
};

} // namespace qxplatform
