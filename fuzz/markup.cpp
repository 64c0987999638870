// What masking, unmasking and the reduction of HTML make of any text: masked text comes back, and no reduction grows
// but by what it inserts for tags and links.
#include "core/text/string.h"
#include "markup/html_mask.h"
#include "markup/html_to_text.h"
#include "markup/text_to_html.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace qx;

// The bytes are 16-bit units in little-endian order, up to the first zero.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<wchar_t> text(size / 2 + 1);
    if (size != 0)
        std::memcpy(text.data(), data, size / 2 * 2);
    const String original(text.data());

    if (DemaskHtml(MaskHtml(original)) != original)
        std::abort();
    if (DemaskHtml(original).Length() > original.Length())
        std::abort();
    for (const bool placeholders : {false, true})
    {
        // A closing "/p" or "</p>" gives less than it is long, but "<li>" may stand beside a link that gains blanks.
        if (HtmlToText(original, placeholders).Length() > 2 * original.Length() + 3)
            std::abort();
        HtmlToText(TextToHtml(original, placeholders), placeholders);
    }
    return 0;
}
