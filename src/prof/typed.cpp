#include "prof/typed.h"

#include <cstdint>
#include <cwchar>
#include <wchar.h>

namespace qx
{

namespace
{

template <class... Arguments>
void Write(scValueText& target, const wchar_t* format, Arguments... arguments)
{
    const int count = _snwprintf(target.text, std::size(target.text), format, arguments...);
    target.length = count >= 0 ? static_cast<std::size_t>(count) : 0;
}

// Returns the number of fields that were read, 0 if the text ends too early.
template <class... Fields>
int Scan(std::wstring_view text, const wchar_t* format, Fields*... fields)
{
    return std::max(_snwscanf(text.data(), text.size(), format, fields...), 0);
}

template <class T>
void WriteNumber(scValueText& text, const wchar_t* format, const T& value)
{
    Write(text, format, value);
}

// ---- Doubles: always written with a point, even if the process has set a locale with a decimal comma in a C runtime
// that it shares with this library.

wchar_t DecimalPoint()
{
    wchar_t half[4] = L"0.5";
    _snwprintf(half, std::size(half), L"%.1f", 0.5);
    return half[1];
}

void WriteDouble(scValueText& text, const wchar_t* format, const double& value)
{
    Write(text, format, value);
    std::replace(text.text, text.text + text.length, DecimalPoint(), L'.');
}

// Accepts any text. Text that isn't a number becomes 0.
bool ReadDouble(std::wstring_view text, double& result)
{
    wchar_t copy[200]; // wcstod needs a terminator
    const std::size_t length = text.copy(copy, std::size(copy) - 1);
    copy[length] = 0;
    if (const wchar_t point = DecimalPoint(); point != L'.')
    {
        std::replace(copy, copy + length, point, L'\0');
        std::replace(copy, copy + length, L'.', point);
    }
    result = wcstod(copy, nullptr);
    return true;
}

// ---- Flags: decided by the first character, which must be in upper case to mean true.

bool BeginsTrue(std::wstring_view text)
{
    return text.starts_with(L'T') || text.starts_with(L'Y');
}

void WriteBool(scValueText& text, const wchar_t*, const std::int32_t& value)
{
    Write(text, value != 0 ? L"TRUE" : L"FALSE");
}

bool ReadBool(std::wstring_view text, std::int32_t& result)
{
    result = BeginsTrue(text);
    return true;
}

// ---- Numbers: the hexadecimal format is tried first; its 'x' can't begin a decimal number.

bool ReadInt(std::wstring_view text, std::int32_t& result)
{
    return Scan(text, L"x%X", &result) == 1 || ReadDecimalText(text, result);
}

bool ReadInt64(std::wstring_view text, std::int64_t& result)
{
    return Scan(text, L"x%I64X", &result) == 1 || ReadDecimalText(text, result);
}

// ---- Points and rectangles

void WritePoint(scValueText& text, const wchar_t* format, const ProfFields2& value)
{
    Write(text, format, value[0], value[1]);
}

bool ReadPoint(std::wstring_view text, ProfFields2& result)
{
    return Scan(text, L"(%d,%d)", &result[0], &result[1]) == 2;
}

void WriteRect(scValueText& text, const wchar_t* format, const ProfFields4& value)
{
    Write(text, format, value[0], value[1], value[2], value[3]);
}

bool ReadRect(std::wstring_view text, ProfFields4& result)
{
    return Scan(text, L"(%d,%d,%d,%d)", &result[0], &result[1], &result[2], &result[3]) == 4;
}

// Adds with wrap-around, because a width or height may exceed 31 bits. A rectangle that spans all coordinates is
// restored correctly.
std::int32_t Sum(std::int32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

std::int32_t Difference(std::int32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

void WriteRectLTWH(scValueText& text, const wchar_t* format, const ProfFields4& value)
{
    Write(text, format, value[0], value[1], Difference(value[2], value[0]), Difference(value[3], value[1]));
}

bool ReadRectLTWH(std::wstring_view text, ProfFields4& result)
{
    if (!ReadRect(text, result))
        return false;
    result[2] = Sum(result[2], result[0]);
    result[3] = Sum(result[3], result[1]);
    return true;
}

// ---- Colours: one number, or red, green and blue, without range checks.

void WriteColorref(scValueText& text, const wchar_t* format, const std::uint32_t& value)
{
    Write(text, format, value & 0xff, value >> 8 & 0xff, value >> 16 & 0xff);
}

bool ReadColorref(std::wstring_view text, std::uint32_t& result)
{
    if (Scan(text, L"x%lx", &result) == 1)
        return true;
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
    if (Scan(text, L"(%d,%d,%d)", &red, &green, &blue) != 3)
        return false;
    result = red | green << 8 | blue << 16;
    return true;
}

constexpr wchar_t kRectFormat[] = L"(%d,%d,%d,%d)";

} // namespace

bool ReadFlagText(std::wstring_view text, std::int32_t& result)
{
    result = text.empty() || BeginsTrue(text);
    return true;
}

bool ReadDecimalText(std::wstring_view text, std::int32_t& result)
{
    return Scan(text, L"%d", &result) == 1;
}

bool ReadDecimalText(std::wstring_view text, std::int64_t& result)
{
    return Scan(text, L"%I64u", &result) == 1;
}

// Append and set use different formats for hexadecimal numbers. The difference shows in files, so it must stay.
constexpr scTypedForm<std::int32_t> kProfBool{WriteBool, nullptr, nullptr, ReadBool};
constexpr scTypedForm<std::uint32_t> kProfColorref{WriteColorref, L"(%d,%d,%d)", L"(%d,%d,%d)", ReadColorref};
constexpr scTypedForm<double> kProfDouble{WriteDouble, L"%f", L"%lf", ReadDouble};
constexpr scTypedForm<std::int32_t> kProfInt{WriteNumber, L"%d", L"%d", ReadInt};
constexpr scTypedForm<std::int32_t> kProfIntHex{WriteNumber, L"x%08X", L"x%x", nullptr};
constexpr scTypedForm<std::int64_t> kProfInt64{WriteNumber, L"%I64u", L"%I64u", ReadInt64, 63};
constexpr scTypedForm<std::int64_t> kProfInt64Hex{WriteNumber, L"x%I64X", L"x%I64x", nullptr};
constexpr scTypedForm<ProfFields2> kProfPoint{WritePoint, L"(%d,%d)", L"(%d,%d)", ReadPoint};
constexpr scTypedForm<ProfFields4> kProfRect{WriteRect, kRectFormat, kRectFormat, ReadRect};
constexpr scTypedForm<ProfFields4> kProfRectLTWH{WriteRectLTWH, kRectFormat, kRectFormat, ReadRectLTWH};

} // namespace qx
