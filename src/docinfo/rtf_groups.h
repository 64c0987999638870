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

// Takes groups out of a text one by one, in order. A group ends at its first closing brace. When it is taken, all its
// repetitions are removed, too, and the remaining text may form new groups.
//
// The text is kept in pieces that end at closing braces. A group contains only one closing brace, so it is always the
// end of a piece; the text before it is joined with the next piece. The time is quadratic in the number of braces at
// worst, but only one number per piece is compared.
class RTFGroups
{
public:
    struct Group
    {
        TextBuffer key;
        TextBuffer value; // with the character after the key, without white space at the end
    };

    explicit RTFGroups(std::wstring_view text);

    std::optional<Group> Take();

private:
    static constexpr std::uint64_t kRemoved = 0;

    static std::uint64_t EndOf(std::wstring_view piece);
    void RemoveAll(const TextBuffer& group);
    std::size_t NextPiece(std::size_t after) const;

    std::vector<TextBuffer> _pieces;  // each ends at a closing brace; the text after the last one is dropped
    std::vector<std::uint64_t> _ends; // the last characters of each piece as a number, or kRemoved
    std::size_t _current = 0;         // pieces before this one contain no group
    std::size_t _searched = 0;        // no group of the current piece begins before this position
};

} // namespace qx
