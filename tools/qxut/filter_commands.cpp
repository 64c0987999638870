#include "filter_commands.h"

#include "failure.h"
#include "input_output.h"
#include "text.h"

#include <qxut23/bstr.h>
#include <qxut23/convert.h>
#include <qxut23/markup.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace qxut
{

namespace
{

struct FilterOptions
{
    std::string file = "-";
    std::string output = "-";
    bool compress = false;
    bool placeholders = false;
};

// Filters take and give whole contents.
using Filter = std::string (*)(const std::string& input, const FilterOptions& options);

// The library's texts end at a zero character, so what stands behind one would be lost unseen, as would bytes that are
// no UTF-8.
WideText TextOf(const std::string& input)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    std::string_view text = input;
    if (text.find('\0') != text.npos)
        throw Failure(kMalformed, "the input is no text: it holds a zero byte");
    if (!IsUtf8(text))
        throw Failure(kMalformed, "the input is no UTF-8");
    if (text.substr(0, kMark.size()) == kMark)
        text.remove_prefix(kMark.size());
    return WideText(text);
}

class Bstr
{
public:
    Bstr() = default;
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    ~Bstr() { SysFreeString(_text); }

    QXWCHAR** Address() { return &_text; }
    std::string Text() const { return _text == nullptr ? std::string() : Utf8(_text); }

private:
    QXWCHAR* _text = nullptr;
};

std::string Pack(const std::string& input, const FilterOptions& options)
{
    if (input.size() > std::numeric_limits<std::uint32_t>::max())
        throw Failure(kCannotRead, "the input has more than 4 GB");
    Bstr packed;
    if (UtilConvertBLOBToBSTR(
            input.data(), static_cast<std::uint32_t>(input.size()), packed.Address(), options.compress ? 1 : 0) != 0)
        throw Failure(kCannotRead, "there is not enough memory for the packed text");
    return packed.Text() + '\n';
}

std::string Unpack(const std::string& input, const FilterOptions&)
{
    const WideText text = TextOf(input);
    const std::int32_t size = UtilConvertStringToBLOB(text, nullptr, 0);
    if (size < 0)
        throw Failure(kMalformed, "the input can't be unpacked");
    // The library gives nothing for damaged compressed data, and never makes a text of this form of nothing.
    const QXWCHAR* const begin = text;
    if (size == 0 && begin[0] == u'@' && (begin[1] == u'1' || begin[1] == u'2') && begin[2] == u'@')
        throw Failure(kMalformed, "the packed text is damaged");
    std::string bytes(static_cast<std::size_t>(size), '\0');
    if (size > 0 && UtilConvertStringToBLOB(text, bytes.data(), static_cast<std::uint32_t>(size)) != size)
        throw Failure(kMalformed, "the input can't be unpacked");
    return bytes;
}

// The library ends lines with carriage returns, a terminal with line feeds.
std::string HtmlToText(const std::string& input, const FilterOptions& options)
{
    Bstr text;
    UtilConvertHtml2PlainText(TextOf(input), text.Address(), options.placeholders ? 1 : 0);
    std::string lines = text.Text();
    std::replace(lines.begin(), lines.end(), '\r', '\n');
    return lines;
}

// A line that ends with a line feed alone is a line too, and the end of the last line begins no paragraph.
std::string ParagraphLines(const std::string& input)
{
    std::string lines;
    lines.reserve(input.size());
    char previous = 0;
    for (const char c : input)
    {
        if (c != '\n')
            lines += c;
        else if (previous != '\r')
            lines += '\r';
        previous = c;
    }
    if (!lines.empty() && lines.back() == '\r')
        lines.pop_back();
    return lines;
}

std::string TextToHtml(const std::string& input, const FilterOptions& options)
{
    Bstr html;
    UtilConvertText2HTML(TextOf(ParagraphLines(input)), html.Address(), options.placeholders ? 1 : 0);
    return html.Text() + '\n';
}

std::string Mask(const std::string& input, const FilterOptions&)
{
    Bstr masked;
    UtilMaskAllHTMLCharacters(TextOf(input), masked.Address());
    return masked.Text();
}

std::string Unmask(const std::string& input, const FilterOptions&)
{
    Bstr text;
    UtilDemaskAllHTMLCharacters(TextOf(input), text.Address());
    return text.Text();
}

void Run(Filter filter, const FilterOptions& options)
{
    try
    {
        WriteOutput(options.output, filter(ReadInput(options.file), options));
    }
    catch (const std::bad_alloc&)
    {
        throw Failure(kCannotRead, "there is not enough memory for the input");
    }
}

std::shared_ptr<FilterOptions> AddFilter(CLI::App& program, const char* name, const char* description, Filter filter)
{
    auto options = std::make_shared<FilterOptions>();
    CLI::App& command = *program.add_subcommand(name, description);
    command.add_option("FILE", options->file, "the input; the standard input for -, or if it isn't given");
    command.add_option("--output", options->output, "the file to write; the standard output if it isn't given");
    command.callback([filter, options] { Run(filter, *options); });
    return options;
}

void AddFlag(CLI::App& program, const char* command, const char* flag, bool& value, const char* description)
{
    program.get_subcommand(command)->add_flag(flag, value, description);
}

} // namespace

void AddFilterCommands(CLI::App& program)
{
    constexpr char kPlaceholders[] = "tags are [_[p]_] and the like, instead of <p>";

    const auto pack = AddFilter(program, "pack", "turn any bytes into one line of text", Pack);
    AddFlag(program, "pack", "--compress", pack->compress, "compress the bytes first");
    AddFilter(program, "unpack", "turn packed text into its bytes again", Unpack);

    const auto toText = AddFilter(program, "html2text", "reduce HTML to plain text", HtmlToText);
    AddFlag(program, "html2text", "--placeholders", toText->placeholders, kPlaceholders);
    const auto toHtml = AddFilter(program, "text2html", "make a paragraph of HTML of each line", TextToHtml);
    AddFlag(program, "text2html", "--placeholders", toHtml->placeholders, kPlaceholders);
    AddFilter(program, "mask", "replace the characters that HTML masks by entities", Mask);
    AddFilter(program, "unmask", "replace entities by their characters", Unmask);
}

} // namespace qxut
