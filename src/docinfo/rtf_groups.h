// The groups "{\key value}" of a Rich Text file's information group.
#pragma once

#include "core/text/text_buffer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace qx
{

// Returns the groups inside of the first "{\info{\key value}...}", or nothing if there is none.
std::optional<std::wstring_view> FindRTFInfo(std::wstring_view text);

// Takes groups out of a text one by one, the first one first. A group ends at its first closing brace. When it is
// taken, all its repetitions are removed, too, and what is left may form new groups.
//
// The text is kept in pieces that end at closing braces. A group never contains more than one, so it is always the end
// of a piece, and what was in front of it joins the next piece. Time grows with the square of the number of braces at
// worst, but the comparisons are those of one number per piece.
class RTFGroups
{
public:
    struct Group
    {
        TextBuffer key;
        TextBuffer value; // with the character behind the key, without white space at the end
    };

    explicit RTFGroups(std::wstring_view text);

    std::optional<Group> Take();

private:
    static constexpr std::uint64_t kRemoved = 0;

    static std::uint64_t EndOf(std::wstring_view piece);
    void RemoveAll(const TextBuffer& group);
    std::size_t NextPiece(std::size_t after) const;

    std::vector<TextBuffer> _pieces;  // each ends at a closing brace; the text behind the last one is dropped
    std::vector<std::uint64_t> _ends; // the last characters of each piece as a number, or kRemoved
    std::size_t _current = 0;         // pieces in front of this one contain no group
    std::size_t _searched = 0;        // no group of the current piece begins in front of this position
};

} // namespace qx
