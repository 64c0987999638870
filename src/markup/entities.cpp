#include "markup/entities.h"

#include <algorithm>

namespace qx
{
namespace
{

constexpr auto byText = []
{
    auto sorted = htmlEntities;
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.text < b.text; });
    return sorted;
}();

} // namespace

const HtmlEntity* FindHtmlEntity(std::wstring_view text)
{
    const auto* at = std::lower_bound(byText.begin(), byText.end(), text,
        [](const HtmlEntity& row, std::wstring_view key) { return row.text < key; });
    return at != byText.end() && at->text == text ? at : nullptr;
}

} // namespace qx
