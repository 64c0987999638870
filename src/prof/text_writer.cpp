#include "core/text/characters.h"
#include "prof/indent.h"
#include "prof/output.h"
#include "prof/text_form.h"
#include "prof/text_scan.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace qx
{

namespace
{

wchar_t EncodedInValue(wchar_t c)
{
    return c < L' ' ? static_cast<wchar_t>(kControlPictures + c) : c;
}

wchar_t EncodedInName(wchar_t c)
{
    switch (c)
    {
    case L'=':
        return kEncodedEquals;
    case L'[':
        return kEncodedOpen;
    case L']':
        return kEncodedClose;
    default:
        return EncodedInValue(c);
    }
}

wchar_t* CopyName(wchar_t* out, const scProfText& name)
{
    const std::wstring_view text = name.View();
    return name.isPlain ? CopyCharacters(out, text) : std::transform(text.begin(), text.end(), out, EncodedInName);
}

wchar_t* CopyValue(wchar_t* out, std::wstring_view value)
{
    return HasControlCharacter(value) ? std::transform(value.begin(), value.end(), out, EncodedInValue)
                                      : CopyCharacters(out, value);
}

// A list that is being written: its next item and the indent of its items.
struct OpenBlock
{
    WCValConstSListIter<clsItem*> next;
    std::uint32_t level;
};

class clsTextWriter
{
public:
    explicit clsTextWriter(clsProfOutput& output) : _output(output) {}

    void WriteBlock(const clsItemList& list, std::uint32_t level)
    {
        Open(list, level);
        while (!_blocks.empty())
        {
            OpenBlock& block = _blocks.back();
            const clsIndent<wchar_t> indent(block.level);
            const clsItemList* child = WriteLeaves(block, indent.View());
            if (child != nullptr)
                Open(*child, block.level);
            else
            {
                WriteLine(indent.View(), L"}");
                _blocks.pop_back();
            }
        }
    }

private:
    void Open(const clsItemList& list, std::uint32_t level)
    {
        const clsIndent<wchar_t> head(level);
        wchar_t* out = _output.Reserve(head.View().size() + list.Name().length + 4);
        out = CopyCharacters(out, head.View());
        *out++ = L'[';
        out = CopyCharacters(out, list.Name().View());
        *out++ = L']';
        EndLine(out);

        WriteLine(clsIndent<wchar_t>(level + 1).View(), L"{");
        _blocks.push_back({list.begin(), level + 1});
    }

    // Writes leaves until it reaches a list entry or the end. Returns the list of that entry, or null at the end.
    const clsItemList* WriteLeaves(OpenBlock& block, std::wstring_view indent)
    {
        while (block.next)
        {
            const clsItem& item = **block.next++;
            if (item.List() != nullptr)
                return item.List();
            wchar_t* out = _output.Reserve(indent.size() + item.Name().length + item.Value().size() + 3);
            out = CopyCharacters(out, indent);
            out = CopyName(out, item.Name());
            *out++ = L'=';
            out = CopyValue(out, item.Value());
            EndLine(out);
        }
        return nullptr;
    }

    void WriteLine(std::wstring_view indent, std::wstring_view text)
    {
        EndLine(CopyCharacters(CopyCharacters(_output.Reserve(indent.size() + text.size() + 2), indent), text));
    }

    void EndLine(wchar_t* out)
    {
        *out++ = L'\r';
        *out++ = L'\n';
        _output.SetUsed(out);
    }

    clsProfOutput& _output;
    std::vector<OpenBlock> _blocks;
};

} // namespace

void WriteTextForm(clsProfOutput& output, const clsItemList& list, std::uint32_t level)
{
    clsTextWriter(output).WriteBlock(list, level);
}

} // namespace qx
