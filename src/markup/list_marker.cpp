#include "markup/list_marker.h"

namespace qx
{

ListMarker::ListMarker(ListNumbering numbering, std::int32_t number)
{
    constexpr std::int32_t kLastRoman = 3999;
    Prepend(numbering == ListNumbering::None ? L'-' : L'.');
    if (numbering == ListNumbering::None)
        return;
    if (numbering == ListNumbering::LowerLetters && number > 0)
        PrependLetters(number, L'a');
    else if (numbering == ListNumbering::UpperLetters && number > 0)
        PrependLetters(number, L'A');
    else if (numbering == ListNumbering::LowerRoman && number > 0 && number <= kLastRoman)
        PrependRoman(number, L"ivxlcdm");
    else if (numbering == ListNumbering::UpperRoman && number > 0 && number <= kLastRoman)
        PrependRoman(number, L"IVXLCDM");
    else
        PrependDecimal(number);
}

void ListMarker::PrependDecimal(std::int32_t number)
{
    std::uint32_t rest = number < 0 ? 0 - static_cast<std::uint32_t>(number) : static_cast<std::uint32_t>(number);
    do
        Prepend(static_cast<wchar_t>(L'0' + rest % 10));
    while ((rest /= 10) != 0);
    if (number < 0)
        Prepend(L'-');
}

// Prepends a number as letters: a to z, aa, ab, ...
void ListMarker::PrependLetters(std::int32_t number, wchar_t first)
{
    for (; number > 0; number = (number - 1) / 26)
        Prepend(static_cast<wchar_t>(first + (number - 1) % 26));
}

// Prepends a number as a Roman numeral. `symbols` are the numerals for 1, 5, 10, 50, 100, 500 and 1000.
void ListMarker::PrependRoman(std::int32_t number, std::wstring_view symbols)
{
    // The numerals of each digit in reverse order: 0 is the one, 1 the five and 2 the ten of the decimal place.
    constexpr std::string_view kDigits[] = {"", "0", "00", "000", "10", "1", "01", "001", "0001", "20"};
    for (std::size_t place = 0; number > 0; number /= 10, place += 2)
        for (const char symbol : kDigits[number % 10])
            Prepend(symbols[place + static_cast<std::size_t>(symbol - '0')]);
}

} // namespace qx
