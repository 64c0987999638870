// The text of arbitrary pages. Its length must be bounded by the page, and masked text must survive unmasking and the
// conversion of a page that contains it.
#include "markup/page_text.h"
#include "core/text/string.h"
#include "markup/html_escape.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

using namespace qx;

// The bytes are little-endian 16-bit units, including zeros.
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
    // Masked text contains no markup, and the lines of this text are already folded.
    const String preformatted = String(L"<pre>\n") + EscapeHtml(text.View());
    if (text.View().find_first_of(std::wstring_view(L"\r\n\0", 3)) == std::wstring_view::npos &&
        PageText(preformatted.View(), false).View() != text.View())
        std::abort();
    return 0;
}
