#include "filter_commands.h"

#include "failure.h"
#include "input_output.h"
#include "pass_phrase.h"
#include "terminal.h"
#include "text.h"

#include <qxut23/bstr.h>
#include <qxut23/convert.h>
#include <qxut23/markup.h>
#include <qxut23/packed_text.h>
#include <qxut23/page_text.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
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
    KeyOptions key;
    const QXWCHAR* passPhrase = nullptr; // what `key` refers to, while the filter runs
    bool compress = false;
    bool lenient = false;
    bool placeholders = false;
    bool links = false;
    bool simple = false;
};

// A filter converts the whole input at once.
using Filter = std::string (*)(const std::string& input, const FilterOptions& options);

// Converts the input to wide text without a byte order mark. Rejects zero bytes and invalid UTF-8: the library's texts
// end at a zero character, so the rest would be lost silently, and so would invalid bytes.
WideText TextOf(const std::string& input)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    std::string_view text = input;
    if (text.find('\0') != text.npos)
        throw Failure(kMalformed, "the input is not text: it contains a zero byte");
    if (!IsUtf8(text))
        throw Failure(kMalformed, "the input is not UTF-8");
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
        throw Failure(kCannotRead, "the input is larger than 4 GB");
    Bstr packed;
    if (UtilConvertBLOBToBSTR(
            input.data(), static_cast<std::uint32_t>(input.size()), packed.Address(), options.compress ? 1 : 0) != 0)
        throw Failure(kCannotRead, "not enough memory for the packed text");
    return packed.Text() + '\n';
}

// Unpacks whatever the library's older functions accept.
std::string UnpackLeniently(const WideText& text)
{
    const std::int32_t size = UtilConvertStringToBLOB(text, nullptr, 0);
    if (size < 0)
        throw Failure(kMalformed, "cannot unpack the input");
    // For damaged compressed data the library returns no bytes. It never writes empty data in a form that begins with
    // "@1@" or "@2@".
    const QXWCHAR* const begin = text;
    if (size == 0 && begin[0] == u'@' && (begin[1] == u'1' || begin[1] == u'2') && begin[2] == u'@')
        throw Failure(kMalformed, "the packed text is damaged");
    std::string bytes(static_cast<std::size_t>(size), '\0');
    if (size > 0 && UtilConvertStringToBLOB(text, bytes.data(), static_cast<std::uint32_t>(size)) != size)
        throw Failure(kMalformed, "cannot unpack the input");
    return bytes;
}

std::int32_t Keep(void* context, const void* data, std::uint32_t size)
{
    try
    {
        static_cast<std::string*>(context)->assign(static_cast<const char*>(data), size);
        return 1;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}

std::string Unpack(const std::string& input, const FilterOptions& options)
{
    const WideText text = TextOf(input);
    if (options.lenient)
        return UnpackLeniently(text);
    std::string bytes;
    const std::string name = options.file == "-" ? "" : options.file + ": ";
    switch (QxUnpackText(text, options.passPhrase, Keep, &bytes))
    {
    case QXUT_UNPACK_OK:
        return bytes;
    case QXUT_UNPACK_NOT_PACKED:
        throw Failure(kMalformed, name + "the input is not packed text; --lenient skips what doesn't belong to it");
    case QXUT_UNPACK_WRONG_KEY:
        throw Failure(kMalformed,
            name + (options.key.IsGiven() ? "the pass phrase is wrong, or the packed text is damaged"
                                          : "the text is encrypted and needs a pass phrase, or it is damaged"));
    case QXUT_UNPACK_NOT_ENCRYPTED:
        throw Failure(kMalformed, name + "the packed text is not encrypted; leave out the pass phrase");
    case QXUT_UNPACK_DAMAGED:
        throw Failure(kMalformed, name + "the packed text is damaged");
    default:
        throw std::bad_alloc();
    }
}

void CheckMemory(std::int32_t result)
{
    if (result == QXUT_PAGE_NO_MEMORY)
        throw std::bad_alloc();
}

std::string HtmlToText(const std::string& input, const FilterOptions& options)
{
    Bstr text;
    if (!options.simple && !options.placeholders)
    {
        CheckMemory(QxConvertHtml2PlainText(TextOf(input), text.Address(), options.links ? QXUT_PAGE_LINKS : 0));
        std::string lines = text.Text();
        if (!lines.empty())
            lines += '\n';
        return lines;
    }
    // This function ends lines with carriage returns.
    UtilConvertHtml2PlainText(TextOf(input), text.Address(), options.placeholders ? 1 : 0);
    std::string lines = text.Text();
    std::replace(lines.begin(), lines.end(), '\r', '\n');
    return lines;
}

// Ends all lines with CR LF, the only line end that starts a paragraph. Drops the end of the last line, so that no
// empty paragraph follows.
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
    CheckMemory(QxMaskHtmlCharacters(TextOf(input), masked.Address()));
    return masked.Text();
}

std::string Unmask(const std::string& input, const FilterOptions&)
{
    Bstr text;
    CheckMemory(QxDemaskHtmlCharacters(TextOf(input), text.Address()));
    return text.Text();
}

void Run(Filter filter, FilterOptions options)
{
    // Read before the input, because both may come from the standard input.
    const PassPhrase passPhrase(options.key, PassPhrase::Purpose::Decrypt);
    options.passPhrase = passPhrase;
    try
    {
        const std::string output = filter(ReadInput(options.file), options);
        const bool isSeen = options.output == "-" && OutputGoesToTerminal();
        WriteOutput(options.output, isSeen ? ShownLines(output) : output);
    }
    catch (const std::bad_alloc&)
    {
        throw Failure(kCannotRead, "not enough memory for the input");
    }
}

std::shared_ptr<FilterOptions> AddFilter(CLI::App& program, const char* name, const char* description, Filter filter)
{
    auto options = std::make_shared<FilterOptions>();
    CLI::App& command = *program.add_subcommand(name, description);
    command.add_option("FILE", options->file, "the input; standard input if omitted or -");
    command.add_option("--output", options->output, "the file to write; standard output if omitted");
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
    constexpr char kPlaceholders[] = "use placeholder tags such as [_[p]_] instead of <p>";

    const auto pack = AddFilter(program, "pack", "convert bytes to one line of packed text", Pack);
    AddFlag(program, "pack", "--compress", pack->compress, "compress the bytes first");
    const auto unpack = AddFilter(program, "unpack", "convert packed text back to bytes", Unpack);
    AddFlag(program, "unpack", "--lenient", unpack->lenient,
        "skip characters that don't belong to packed text, and accept damage as far as the library does");
    CLI::App& unpacking = *program.get_subcommand("unpack");
    AddKeyOptions(unpacking, unpack->key, "the pass phrase of encrypted text, such as an embedded file of a profile");
    for (const char* const option : {"--key", "--key-file", "--key-fd", "--ask-key"})
        unpacking.get_option("--lenient")->excludes(option);

    const auto toText = AddFilter(program, "html2text", "print the text of an HTML page", HtmlToText);
    AddFlag(program, "html2text", "--links", toText->links, "append the target of each link in brackets");
    AddFlag(program, "html2text", "--simple", toText->simple,
        "use the simpler rules of UtilConvertHtml2PlainText, which handle only some elements");
    AddFlag(
        program, "html2text", "--placeholders", toText->placeholders, "like --simple, but tags are written as [_[p]_]");
    CLI::App& command = *program.get_subcommand("html2text");
    command.get_option("--links")->excludes("--simple")->excludes("--placeholders");
    const auto toHtml = AddFilter(program, "text2html", "convert each line to an HTML paragraph", TextToHtml);
    AddFlag(program, "text2html", "--placeholders", toHtml->placeholders, kPlaceholders);
    AddFilter(program, "mask", "replace special characters with HTML character references", Mask);
    AddFilter(program, "unmask", "replace HTML character references with characters", Unmask);
}

} // namespace qxut
