// Single-byte and double-byte code pages, stored as tables in both directions.
#pragma once

#include <array>
#include <vector>

#include "text/code_page.h"

namespace qxplatform
{

// The contents of a page. Two-byte codes have the lead byte in the high byte.
struct PageTables
{
    static constexpr wchar_t kUndefined = 0xffff;
    static constexpr std::size_t kUnits = 0x10000;

    std::array<wchar_t, 256> single{}; // kUndefined for a lead byte
    std::array<bool, 256> strict{};    // bytes that are refused if invalid bytes are refused
    std::array<bool, 256> lead{};      // bytes that begin a two-byte code
    std::vector<wchar_t> pairs;        // indexed by code - 0x8000; empty if the page has no lead bytes
    std::vector<std::uint16_t> exact;  // codes indexed by unit; 0 if there is none, except for U+0000
    std::vector<std::uint16_t> fitted; // the same including best fits
    wchar_t undefinedCharacter = L'?'; // for undefined bytes
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
