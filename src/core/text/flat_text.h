#pragma once

#include <cstddef>
#include <cstdint>

// Operations on zero-terminated texts in buffers of the caller. A null text reads as the empty one; a null buffer is
// left alone.
namespace qx
{

std::size_t TextLength(const wchar_t* text);

// By code unit, unsigned: -1, 0 or 1. Neither text is null.
int CompareUnits(const wchar_t* a, const wchar_t* b);

// The terminator is copied too; the texts may overlap.
void CopyText(wchar_t* target, const wchar_t* source);
void AppendText(wchar_t* target, const wchar_t* source);

// At most size - 1 characters and always the terminator; nothing for size 0.
void CopyTextBounded(wchar_t* target, const wchar_t* source, std::size_t size);

// Remove U+0020 from the beginning and the end.
void TrimTextLeft(wchar_t* text);
void TrimTextRight(wchar_t* text);

// Removes `count` characters (clipped to what there is) at the 1-based position and puts `insert` in their place. A
// position that isn't within the text or right behind it does nothing. `insert` may be null, and may not overlap
// `text`.
void ReplaceInText(wchar_t* text, std::int32_t pos, std::int32_t count, const wchar_t* insert);

// Leaves at most `count` characters from the 1-based position on. A negative position counts from the end. A count of
// -1 leaves the text as it is; else a position outside the text empties it.
void KeepPartOfText(wchar_t* text, std::int32_t pos, std::int32_t count);

} // namespace qx
