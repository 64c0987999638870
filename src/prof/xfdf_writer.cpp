#include "prof/xfdf_form.h"

#include "core/text/surrogates.h"
#include "prof/indent.h"
#include "prof/output.h"
#include "prof/tree_walk.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace qx
{

namespace
{

constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
                                   "<xfdf xmlns=\"http://ns.adobe.com/xfdf/\" xml:space=\"preserve\">\r\n"
                                   "<fields>\r\n";
constexpr std::string_view kXfdfFileEnd = "</fields>\r\n</xfdf>\r\n";

constexpr std::string_view kField = "<field name=\"";
constexpr std::string_view kXfdfNameEnd = "\">\r\n";
constexpr std::string_view kValue = " <value>";
constexpr std::string_view kValueEnd = "</value>\r\n";
constexpr std::string_view kFieldEnd = "</field>\r\n";

constexpr wchar_t kReplacement = 0xFFFD;

struct scReference
{
    wchar_t character;
    std::string_view text;
};

// Characters that can't be written literally, or would be read back differently.
constexpr std::array kReferences{
    scReference{L'<', "&lt;"},
    scReference{L'>', "&gt;"},
    scReference{L'&', "&amp;"},
    scReference{L'\'', "&apos;"},
    scReference{L'"', "&quot;"},
    scReference{L'\t', "&#x0009;"},
    scReference{L'\n', "&#x000a;"},
    scReference{L'\r', "&#x000d;"},
};
constexpr std::size_t kLongest = 8; // bytes per character, at most

char* Copy(char* out, std::string_view text)
{
    memcpy(out, text.data(), text.size());
    return out + text.size();
}

// Removes the first character from the text and returns it. It may take two UTF-16 units. Characters that XML can't
// represent are replaced.
std::uint32_t TakeCharacter(std::wstring_view& text)
{
    const wchar_t c = text[0];
    text.remove_prefix(1);
    if (IsHighSurrogate(c) && !text.empty() && IsLowSurrogate(text[0]))
    {
        const wchar_t low = text[0];
        text.remove_prefix(1);
        return CodePointOf(c, low);
    }
    if (IsHighSurrogate(c) || IsLowSurrogate(c) || c >= 0xFFFE)
        return kReplacement;
    return c < L' ' ? static_cast<std::uint32_t>(kControlPictures + c) : c;
}

char* CopyUTF8(char* out, std::uint32_t c)
{
    const auto put = [&](std::uint32_t byte)
    {
        *out++ = static_cast<char>(byte);
    };
    if (c < 0x80)
        put(c);
    else if (c < 0x800)
    {
        put(0xC0 | c >> 6);
        put(0x80 | (c & 0x3F));
    }
    else
    {
        if (c < 0x10000)
            put(0xE0 | c >> 12);
        else
        {
            put(0xF0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3F));
        }
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    }
    return out;
}

char* CopyMasked(char* out, std::wstring_view text)
{
    while (!text.empty())
    {
        const auto reference = std::find_if(kReferences.begin(), kReferences.end(),
            [&](const scReference& known) { return known.character == text[0]; });
        if (reference != kReferences.end())
        {
            out = Copy(out, reference->text);
            text.remove_prefix(1);
        }
        else
            out = CopyUTF8(out, TakeCharacter(text));
    }
    return out;
}

class clsXfdfWriter
{
public:
    clsXfdfWriter(clsProfOutput& output, std::uint32_t level) : _output(output), _indent(level) {}

    void Write(std::string_view text) { _output.SetUsed(Copy(_output.ReserveBytes(text.size()), text)); }

    // Returns the total length of the names that a reader will create for the fields.
    std::uint64_t NameCharacters() const { return _nameCharacters; }

    // The visitor functions of WalkTree.
    void Leaf(const clsItem& item, std::uint32_t)
    {
        _nameCharacters += _pathLengths.back() + item.Name().length;
        BeginField(item.Name().View());
        Write(_indent.View());
        Write(kValue);
        WriteMasked(item.Value());
        Write(kValueEnd);
        EndField();
    }

    void Begin(const clsItemList& list, std::uint32_t level)
    {
        _pathLengths.push_back(_pathLengths.back() + list.Name().length + 1);
        BeginField(list.Name().View());
        _indent = clsIndent<char>(level + 1);
    }

    void End(std::uint32_t level)
    {
        _pathLengths.pop_back();
        _indent = clsIndent<char>(level);
        EndField();
    }

private:
    void BeginField(std::wstring_view name)
    {
        Write(_indent.View());
        Write(kField);
        WriteMasked(name);
        Write(kXfdfNameEnd);
    }

    void EndField()
    {
        Write(_indent.View());
        Write(kFieldEnd);
    }

    // Writes in pieces, because the buffer of a piece must have room for the longest encoding of each character.
    void WriteMasked(std::wstring_view text)
    {
        constexpr std::size_t kPiece = 1024;
        while (!text.empty())
        {
            std::size_t length = std::min(text.size(), kPiece);
            if (length < text.size() && IsHighSurrogate(text[length - 1]))
                ++length; // keep surrogate pairs together
            _output.SetUsed(CopyMasked(_output.ReserveBytes(length * kLongest), text.substr(0, length)));
            text.remove_prefix(length);
        }
    }

    clsProfOutput& _output;
    clsIndent<char> _indent;                    // of the next line
    std::vector<std::uint64_t> _pathLengths{0}; // the length of the path of each open field, including a trailing dot
    std::uint64_t _nameCharacters = 0;
};

} // namespace

bool WriteXfdfFile(clsProfOutput& output, const clsItemList& root)
{
    constexpr std::uint32_t kRootLevel = 1;
    clsXfdfWriter writer(output, kRootLevel);
    writer.Write(kHead);
    WalkTree(root, kRootLevel, writer);
    writer.Write(kXfdfFileEnd);
    return writer.NameCharacters() <= MostXfdfNameCharacters(output.Bytes());
}

void WriteXfdfObject(clsProfOutput& output, const clsItemList& root, std::uint32_t level)
{
    clsXfdfWriter writer(output, level);
    WalkTree(root, level, writer);
}

} // namespace qx
