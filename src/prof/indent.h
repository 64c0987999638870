// The white space in front of a line of a saved profile, which shows the depth to a reader's eye.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

// A tab for each four levels and a blank for each one left. Readers skip it, so where it would have more than 255
// characters it stays at that: the text of a tree of any depth then grows with the tree and not with its square.
template <class Char>
class clsIndent
{
public:
    explicit clsIndent(std::uint32_t level)
    {
        const std::size_t tabs = std::min<std::size_t>(level / 4, kLongest);
        const std::size_t blanks = std::min<std::size_t>(level % 4, kLongest - tabs);
        std::fill_n(_text, tabs, Char{'\t'});
        std::fill_n(_text + tabs, blanks, Char{' '});
        _length = tabs + blanks;
    }

    std::basic_string_view<Char> View() const { return {_text, _length}; }

private:
    static constexpr std::size_t kLongest = 255;

    Char _text[kLongest];
    std::size_t _length;
};

} // namespace qx
