// Values that are no texts: how each type is written as text and read back. The table of the types is in typed.cpp; a
// new type is a row there, one here, and one where the exports are made.
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

// A value's text; the longest is that of the largest double with its six decimals.
struct scValueText
{
    wchar_t text[340];
    std::size_t length;

    std::wstring_view View() const { return {text, length}; }
};

// A row of the table. Numbers are written by the formatter and read by the scanner, in its "C" locale.
template <class T>
struct scTypedForm
{
    void (*write)(scValueText& text, const wchar_t* format, const T& value);
    const wchar_t* appendFormat;
    const wchar_t* setFormat;
    // Whether the text is one of the type; if not, fields in front of the first wrong one may be there already. Null
    // for a second way of writing a type.
    bool (*read)(std::wstring_view text, T& result);
    std::size_t longest = 199; // characters of the text that are looked at
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
extern const scTypedForm<ProfFields4> kProfRectLTWH; // in the text width and height instead of right and bottom

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

// kProfNoLeaf, and `result` untouched, if there is no leaf or it is empty; kProfNotOfThisType if it is something else.
template <class T>
ProfError GetTyped(clsItemList& start, const wchar_t* path, const scTypedForm<T>& form, T& result)
{
    const clsItem* const leaf = FindLeafByPath(start, path);
    if (leaf == nullptr || leaf->Value().empty())
        return kProfNoLeaf;
    return form.read(leaf->Value().substr(0, form.longest), result) ? kProfOk : kProfNotOfThisType;
}

// Readers of single texts, which are stricter and looser than those of the table: no hexadecimal numbers, and an empty
// text is true.
bool ReadFlagText(std::wstring_view text, std::int32_t& result);
bool ReadDecimalText(std::wstring_view text, std::int32_t& result);
bool ReadDecimalText(std::wstring_view text, std::int64_t& result);

} // namespace qx
