// Typed values: how each type is formatted as text and parsed. The table of types is in typed.cpp. To add a type, add a
// row there, a declaration here and its exports.
#pragma once

#include "prof/job.h"
#include "prof/path.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

// x, y; left, top, right, bottom.
using ProfFields2 = std::array<std::int32_t, 2>;
using ProfFields4 = std::array<std::int32_t, 4>;

// The text of a value. The size fits the longest one, the largest double with six decimals.
struct scValueText
{
    wchar_t text[340];
    std::size_t length;

    std::wstring_view View() const { return {text, length}; }
};

// A row of the table. Numbers are formatted and scanned in the "C" locale.
template <class T>
struct scTypedForm
{
    void (*write)(scValueText& text, const wchar_t* format, const T& value);
    const wchar_t* appendFormat;
    const wchar_t* setFormat;
    // Parses the text. Returns false if it doesn't match the type; fields before the first invalid one may have been
    // stored. Null for rows that only add a second format for writing a type.
    bool (*read)(std::wstring_view text, T& result);
    std::size_t longest = 199; // the number of characters that are parsed
};

extern const scTypedForm<std::int32_t> kProfBool;
extern const scTypedForm<std::uint32_t> kProfColorref; // red in the low byte, then green, then blue
extern const scTypedForm<double> kProfDouble;
extern const scTypedForm<std::int32_t> kProfInt;
extern const scTypedForm<std::int32_t> kProfIntHex;
extern const scTypedForm<std::int64_t> kProfInt64;
extern const scTypedForm<std::int64_t> kProfInt64Hex;
extern const scTypedForm<ProfFields2> kProfPoint;
extern const scTypedForm<ProfFields4> kProfRect;
extern const scTypedForm<ProfFields4> kProfRectLTWH; // the text has width and height instead of right and bottom

template <class T>
void AppendTyped(clsItemList& start, const wchar_t* path, const scTypedForm<T>& form, const T& value)
{
    scValueText text;
    form.write(text, form.appendFormat, value);
    AppendLeafByPath(start, path, text.View());
}

template <class T>
void SetTyped(clsItemList& start, const wchar_t* path, const scTypedForm<T>& form, const T& value)
{
    scValueText text;
    form.write(text, form.setFormat, value);
    SetLeafByPath(start, path, text.View());
}

// Returns kProfNoLeaf if the leaf is missing or empty; `result` is unchanged then. Returns kProfNotOfThisType if the
// text doesn't match the type.
template <class T>
ProfError GetTyped(clsItemList& start, const wchar_t* path, const scTypedForm<T>& form, T& result)
{
    const clsItem* const leaf = FindLeafByPath(start, path);
    if (leaf == nullptr || leaf->Value().empty())
        return kProfNoLeaf;
    return form.read(leaf->Value().substr(0, form.longest), result) ? kProfOk : kProfNotOfThisType;
}

// Parsers for single texts. Unlike the parsers of the table they accept no hexadecimal numbers, and an empty text is
// true.
bool ReadFlagText(std::wstring_view text, std::int32_t& result);
bool ReadDecimalText(std::wstring_view text, std::int32_t& result);
bool ReadDecimalText(std::wstring_view text, std::int64_t& result);

} // namespace qx
