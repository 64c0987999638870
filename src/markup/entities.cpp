#include "markup/entities.h"

#include <algorithm>

namespace qx
{
namespace
{

constexpr auto kByText = []
{
    auto sorted = kHtmlEntities;
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.text < b.text; });
    return sorted;
}();

// The index of the first row for each first letter. Only few rows share a letter.
constexpr auto kRowsOfLetter = []
{
    std::array<unsigned char, 129> begins{};
    for (std::size_t letter = 0; letter < begins.size(); ++letter)
        begins[letter] = static_cast<unsigned char>(
            std::count_if(kByText.begin(), kByText.end(), [=](const auto& row) { return row.text[1] < letter; }));
    return begins;
}();

} // namespace

const HtmlEntity* FindHtmlEntity(std::wstring_view text)
{
    if (text.size() < 2 || text[1] + 1u >= kRowsOfLetter.size())
        return nullptr;
    const HtmlEntity* const end = kByText.data() + kRowsOfLetter[text[1] + 1u];
    const HtmlEntity* const found =
        std::find_if(kByText.data() + kRowsOfLetter[text[1]], end, [=](const auto& row) { return row.text == text; });
    return found != end ? found : nullptr;
}

} // namespace qx
