// The markers of list items: "-", "7.", "g.", "VII.".
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

enum class ListNumbering : unsigned char
{
    None,
    Decimal,
    LowerLetters,
    UpperLetters,
    LowerRoman,
    UpperRoman
};

class ListMarker
{
public:
    ListMarker() = default; // empty

    // Falls back to decimal for numbers that letters or Roman numerals cannot express.
    ListMarker(ListNumbering numbering, std::int32_t number);

    std::wstring_view Text() const { return {_text.data() + _start, _text.size() - _start}; }
    bool IsEmpty() const { return _start == _text.size(); }

private:
    void Prepend(wchar_t c) { _text[--_start] = c; }
    void PrependDecimal(std::int32_t number);
    void PrependLetters(std::int32_t number, wchar_t first);
    void PrependRoman(std::int32_t number, std::wstring_view symbols);

    // Filled from the end. The longest text is the numeral MMMDCCCLXXXVIII and a full stop.
    std::array<wchar_t, 16> _text{};
    std::size_t _start = 16;
};

} // namespace qx
