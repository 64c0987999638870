#include "prof/xml_form.h"

#include "core/text/characters.h"
#include "prof/indent.h"
#include "prof/mask.h"
#include "prof/output.h"
#include "prof/tree_walk.h"

#include <cstdint>

namespace qx
{

namespace
{

constexpr std::wstring_view kMark = L"\xFEFF";
constexpr std::wstring_view kHeadBehindFirstLine =
    L"\r\n"
    L"<!-- DTD -->\r\n"
    L"<!DOCTYPE profile [\r\n"
    L" <!ENTITY cr \"&#x000a;<!--CR-->\">\r\n"
    L" <!ENTITY tab \"&#x0009;<!--TAB-->\">\r\n"
    L" <!ELEMENT profile (list*, item*)*>\r\n"
    L"  <!ELEMENT list (list?, item?)*>\r\n"
    L"  <!ATTLIST list name CDATA #REQUIRED>\r\n"
    L"   <!ELEMENT item (#PCDATA)>\r\n"
    L"   <!ATTLIST item name CDATA #REQUIRED>\r\n"
    L"   <!ATTLIST item xml:space (default|preserve) \"preserve\"> ]>\r\n"
    L"<!-- DATA -->\r\n"
    L"<profile>\r\n";
constexpr std::wstring_view kXmlFileEnd = L"</profile>\r\n";

constexpr std::wstring_view kItem = L"<item name=\"";
constexpr std::wstring_view kItemEnd = L"</item>\r\n";
constexpr std::wstring_view kList = L"<list name=\"";
constexpr std::wstring_view kListEnd = L"</list>\r\n";
constexpr std::wstring_view kXmlNameEnd = L"\">";
constexpr std::wstring_view kLineEnd = L"\r\n";

// A text to be written masked. Most texts have nothing to mask and are copied unchanged.
class clsMaskedText
{
public:
    explicit clsMaskedText(std::wstring_view text) : _text(text), _length(clsProfMask::MaskedLength(text)) {}

    std::size_t Length() const { return _length; }
    wchar_t* CopyTo(wchar_t* out) const
    {
        return _length == _text.size() ? CopyCharacters(out, _text) : clsProfMask::Mask(out, _text);
    }

private:
    std::wstring_view _text;
    std::size_t _length;
};

class clsXmlWriter
{
public:
    clsXmlWriter(clsProfOutput& output, std::uint32_t level) : _output(output), _indent(level) {}

    void Write(std::wstring_view text) { _output.SetUsed(CopyCharacters(_output.Reserve(text.size()), text)); }

    // The visitor functions of WalkTree.
    void Leaf(const clsItem& item, std::uint32_t)
    {
        const std::wstring_view indent = _indent.View();
        const clsMaskedText name(item.Name().View());
        const clsMaskedText value(item.Value());
        wchar_t* out = _output.Reserve(
            indent.size() + kItem.size() + name.Length() + kXmlNameEnd.size() + value.Length() + kItemEnd.size());
        out = CopyCharacters(CopyCharacters(out, indent), kItem);
        out = CopyCharacters(name.CopyTo(out), kXmlNameEnd);
        out = CopyCharacters(value.CopyTo(out), kItemEnd);
        _output.SetUsed(out);
    }

    void Begin(const clsItemList& list, std::uint32_t level)
    {
        const clsMaskedText name(list.Name().View());
        Write(_indent.View());
        Write(kList);
        _output.SetUsed(name.CopyTo(_output.Reserve(name.Length())));
        Write(kXmlNameEnd);
        Write(kLineEnd);
        _indent = clsIndent<wchar_t>(level + 1);
    }

    void End(std::uint32_t level)
    {
        _indent = clsIndent<wchar_t>(level);
        Write(_indent.View());
        Write(kListEnd);
    }

private:
    clsProfOutput& _output;
    clsIndent<wchar_t> _indent; // of the next line
};

} // namespace

bool IsXmlHeadLine(std::wstring_view line)
{
    const std::size_t at = kHeadBehindFirstLine.find(line);
    return at != std::wstring_view::npos && at > 0 && kHeadBehindFirstLine.substr(at + line.size()).starts_with(kLineEnd) &&
           (kHeadBehindFirstLine[at - 1] == L' ' || kHeadBehindFirstLine[at - 1] == L'\n');
}

void WriteXmlFile(clsProfOutput& output, const clsItemList& root)
{
    constexpr std::uint32_t kRootLevel = 1;
    clsXmlWriter writer(output, kRootLevel);
    writer.Write(kMark);
    writer.Write(kXmlFirstLine);
    writer.Write(kHeadBehindFirstLine);
    WriteXmlObject(output, root, kRootLevel);
    writer.Write(kXmlFileEnd);
}

void WriteXmlObject(clsProfOutput& output, const clsItemList& root, std::uint32_t level)
{
    clsXmlWriter writer(output, level);
    const bool hasTag = root.Name().View() != L"/";
    if (hasTag)
        writer.Begin(root, level);
    WalkTree(root, hasTag ? level + 1 : level, writer);
    if (hasTag)
        writer.End(level);
}

} // namespace qx
