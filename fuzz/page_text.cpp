// The text of any page: it is bounded by the page, and text that is masked comes back, also as the text of a page.
#include "markup/page_text.h"
#include "core/text/string.h"
#include "markup/html_escape.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

using namespace qx;

// The bytes are 16-bit units in little-endian order; a zero is a unit like any other.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<wchar_t> units(size / 2);
    if (!units.empty())
        std::memcpy(units.data(), data, units.size() * 2);
    const std::wstring_view page(units.data(), units.size());

    const String text = PageText(page, false);
    if (text.Length() > 10 * page.size() || PageText(page, true).Length() > 10 * page.size())
        std::abort();
    const String masked = EscapeHtml(page);
    if (UnescapeHtml(masked.View()).View() != page || UnescapeHtml(page).Length() > page.size())
        std::abort();
    // The text holds no markup once it is masked, and its lines are folded already.
    const String preformatted = String(L"<pre>\n") + EscapeHtml(text.View());
    if (text.View().find_first_of(std::wstring_view(L"\r\n\0", 3)) == std::wstring_view::npos &&
        PageText(preformatted.View(), false).View() != text.View())
        std::abort();
    return 0;
}
