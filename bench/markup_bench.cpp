// HTML to text, masking and unmasking of 5 MB, compared with libxml2's HTML parser plus a text walk and with GLib's
// escaping. The peers process UTF-8, the library UTF-16 of the same text.
#include <qxut23/markup.h>
#include <qxut23/page_text.h>

#include <oleauto.h>
#include <windows.h>

#include <benchmark/benchmark.h>
#include <glib.h>
#include <libxml/HTMLparser.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace
{

constexpr std::size_t textSize = 5u << 20;

std::string Words(std::mt19937& random, std::size_t count)
{
    std::string words;
    for (; count != 0; --count)
    {
        for (auto length = 1 + random() % 9; length != 0; --length)
            words += static_cast<char>('a' + random() % 26);
        words += ' ';
    }
    return words;
}

// A page in the style of office programs and mailers.
const std::string& Page()
{
    static const std::string page = []
    {
        std::mt19937 random(8);
        std::string html = "<html><head><title>A report</title><style>p { margin: 0 }</style></head><body>\r\n";
        while (html.size() < textSize)
        {
            html += "<h2 class=\"head\">" + Words(random, 4) + "</h2>\r\n<p style=\"margin:0\">" + Words(random, 40) +
                    "&auml;&amp;&#252; <b>" + Words(random, 3) + "</b></p>\r\n<ul><li>" + Words(random, 5) +
                    "</li><li>" + Words(random, 5) + "</li></ul>\r\n<table><tr><td>" + Words(random, 2) + "</td><td>" +
                    Words(random, 2) + "</td></tr></table>\r\n<a href=\"https://example.org/\">" + Words(random, 2) +
                    "</a><br>\r\n";
        }
        return html + "</body></html>";
    }();
    return page;
}

std::vector<wchar_t> Wide(const std::string& text)
{
    std::vector<wchar_t> wide(text.begin(), text.end());
    wide.push_back(0);
    return wide;
}

template <class Convert>
void Ours(benchmark::State& state, const std::vector<wchar_t>& text, Convert convert)
{
    for (auto _ : state)
    {
        BSTR result = nullptr;
        convert(text.data(), &result);
        benchmark::DoNotOptimize(result);
        SysFreeString(result);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void HtmlToText_Ours(benchmark::State& state)
{
    Ours(state, Wide(Page()), [](const wchar_t* text, BSTR* result) { UtilConvertHtml2PlainText(text, result, 0); });
}

void PageText_Ours(benchmark::State& state)
{
    Ours(state, Wide(Page()), [](const wchar_t* text, BSTR* result) { QxConvertHtml2PlainText(text, result, 0); });
}

void HtmlToText_Libxml2(benchmark::State& state)
{
    for (auto _ : state)
    {
        htmlDocPtr document = htmlReadMemory(Page().data(), static_cast<int>(Page().size()), nullptr, "UTF-8",
            HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING);
        xmlChar* text = xmlNodeGetContent(xmlDocGetRootElement(document));
        benchmark::DoNotOptimize(text);
        xmlFree(text);
        xmlFreeDoc(document);
    }
}

void Mask_Ours(benchmark::State& state)
{
    Ours(state, Wide(Page()), UtilMaskAllHTMLCharacters);
}

void Mask_GLib(benchmark::State& state)
{
    for (auto _ : state)
    {
        gchar* text = g_markup_escape_text(Page().data(), static_cast<gssize>(Page().size()));
        benchmark::DoNotOptimize(text);
        g_free(text);
    }
}

void Demask_Ours(benchmark::State& state)
{
    BSTR masked = nullptr;
    UtilMaskAllHTMLCharacters(Wide(Page()).data(), &masked);
    const std::vector<wchar_t> text(masked, masked + SysStringLen(masked) + 1);
    SysFreeString(masked);
    Ours(state, text, UtilDemaskAllHTMLCharacters);
}

} // namespace

BENCHMARK(HtmlToText_Ours)->Name("html to text/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(HtmlToText_Libxml2)->Name("html to text/libxml2")->Unit(benchmark::kMillisecond);
BENCHMARK(PageText_Ours)->Name("page text/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(HtmlToText_Libxml2)->Name("page text/libxml2")->Unit(benchmark::kMillisecond);
BENCHMARK(Mask_Ours)->Name("mask/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(Mask_GLib)->Name("mask/GLib")->Unit(benchmark::kMillisecond);
BENCHMARK(Demask_Ours)->Name("demask/ours")->Unit(benchmark::kMillisecond);
// GLib has no separate unescaping function, so unmasking is compared with escaping of the same text.
BENCHMARK(Mask_GLib)->Name("demask/GLib's escaping")->Unit(benchmark::kMillisecond);
