// Masking, unmasking and HTML reduction of arbitrary text. Unmasking must restore masked text, and a reduction may grow
// only by the text it inserts for tags and links.
#include "core/text/string.h"
#include "markup/html_mask.h"
#include "markup/html_to_text.h"
#include "markup/text_to_html.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace qx;

// The bytes are little-endian 16-bit units, up to the first zero.
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
        // The output for "/p" or "</p>" is shorter than the tag, but "<li>" may occur next to a link that gains blanks.
        if (HtmlToText(original, placeholders).Length() > 2 * original.Length() + 3)
            std::abort();
        HtmlToText(TextToHtml(original, placeholders), placeholders);
    }
    return 0;
}
