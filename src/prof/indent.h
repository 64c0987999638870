// The indentation of the lines of a saved profile, which shows the nesting to human readers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

// One tab for every four levels and one blank for each remaining level, at most 255 characters. Parsers skip the
// indentation. The limit keeps the size of a deeply nested profile linear instead of quadratic.
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
