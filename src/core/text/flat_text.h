#pragma once

#include <cstddef>
#include <cstdint>

// Operations on zero-terminated text in the caller's buffers. A null text is read as the empty text; a null buffer is
// ignored.
namespace qx
{

std::size_t TextLength(const wchar_t* text);

// Compares by unsigned code unit. Returns -1, 0 or 1. Neither text may be null.
int CompareUnits(const wchar_t* a, const wchar_t* b);

// Copy or append the text including its terminator. The texts may overlap.
void CopyText(wchar_t* target, const wchar_t* source);
void AppendText(wchar_t* target, const wchar_t* source);

// Copies at most size - 1 characters and terminates the text. With size 0, writes nothing.
void CopyTextBounded(wchar_t* target, const wchar_t* source, std::size_t size);

// Remove U+0020 from the beginning or the end.
void TrimTextLeft(wchar_t* text);
void TrimTextRight(wchar_t* text);

// Replaces `count` characters at the 1-based position by `insert`; a count that is too large is clipped. Does nothing
// if the position is neither within the text nor directly after it. `insert` may be null and must not overlap `text`.
void ReplaceInText(wchar_t* text, std::int32_t pos, std::int32_t count, const wchar_t* insert);

// Keeps at most `count` characters from the 1-based position on and removes the rest. A negative position counts from
// the end. A count of -1 leaves the text unchanged; otherwise a position outside the text empties it.
void KeepPartOfText(wchar_t* text, std::int32_t pos, std::int32_t count);

} // namespace qx
