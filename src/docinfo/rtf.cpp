#include "docinfo/rtf.h"

#include "core/text/text_buffer.h"
#include "docinfo/file_text.h"
#include "docinfo/rtf_groups.h"
#include "docinfo/text_scan.h"

#include <algorithm>
#include <cstdint>

namespace qx
{
namespace
{

// Matches \'hh at the end of the text and returns the character, or -1.
int HexCharacterAtEnd(const TextBuffer& text)
{
    const std::size_t size = text.size();
    if (size < 4 || text[size - 4] != L'\\' || text[size - 3] != L'\'')
        return -1;
    const int high = HexDigit(text[size - 2]);
    const int low = HexDigit(text[size - 1]);
    return high < 0 || low < 0 ? -1 : high << 4 | low;
}

void HalveBackslashes(TextBuffer& text)
{
    std::size_t target = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        text[target++] = text[i];
        if (text[i] == L'\\' && i + 1 < text.size() && text[i + 1] == L'\\')
            ++i;
    }
    text.resize(target);
}

struct ControlNumber
{
    std::size_t begin; // of the backslash
    std::size_t digits;
    std::size_t end;
};

// Finds the first control word with a number, such as \yr2001.
bool FindNumber(std::wstring_view text, ControlNumber& number)
{
    for (std::size_t at = text.find(L'\\'); at != kNotFound; at = text.find(L'\\', at + 1))
    {
        std::size_t digits = at + 1;
        while (digits < text.size() && text[digits] >= L'a' && text[digits] <= L'z')
            ++digits;
        std::size_t end = digits;
        while (end < text.size() && IsDigitASCII(text[end]))
            ++end;
        if (digits == at + 1 || end == digits)
            continue;
        number = {at, digits, end};
        return true;
    }
    return false;
}

// Parses a date. Each control word is removed with all its repetitions before the next search.
SYSTEMTIME ParseDate(TextBuffer text)
{
    SYSTEMTIME date = kNoTime;
    const struct
    {
        std::wstring_view word;
        WORD& field;
    } fields[] = {
        {L"yr", date.wYear},
        {L"mo", date.wMonth},
        {L"dy", date.wDay},
        {L"hr", date.wHour},
        {L"min", date.wMinute},
    };
    ControlNumber number = {};
    while (FindNumber(text, number))
    {
        const std::wstring_view view = text;
        const std::wstring_view word = view.substr(number.begin + 1, number.digits - number.begin - 1);
        for (const auto& [name, field] : fields)
            if (name == word)
                field = static_cast<WORD>(DecimalNumber(view.substr(number.digits, number.end - number.digits)));
        RemoveAll(text, TextBuffer(view.substr(number.begin, number.end - number.begin)), 0);
    }
    return date;
}

void TakeGroup(clsDocu& record, const RTFGroups::Group& group)
{
    const auto text = [&](clsVariant& field)
    {
        clsDocu::SetText(field, String(std::wstring_view(DecodeRTF(group.value))));
    };
    if (group.key == L"subject")
        text(record.Subject);
    else if (group.key == L"author")
        text(record.Author);
    else if (group.key == L"title")
        text(record.Title);
    else if (group.key == L"keywords")
        text(record.Keywords);
    else if (group.key == L"creatim")
        record.Created = ParseDate(DecodeRTF(group.value));
    else if (group.key == L"revtim")
        record.LastSaved = ParseDate(DecodeRTF(group.value));
    else if (group.key == L"doccomm") // the value isn't decoded here, unlike the other texts
        clsDocu::SetText(record.Comments, String(std::wstring_view(group.value)));
}

} // namespace

// An encoded character contains exactly one backslash, at its beginning, so encoded characters never overlap and the
// order of decoding doesn't matter. One pass decodes each as soon as it is complete, even if decoded characters
// complete it.
TextBuffer DecodeRTF(std::wstring_view text)
{
    TextBuffer result;
    result.reserve(text.size());
    for (const wchar_t next : text)
    {
        if (next == L'\r' || next == L'\n')
            continue;
        result.push_back(next);
        for (int code = HexCharacterAtEnd(result); code >= 0; code = HexCharacterAtEnd(result))
        {
            result.resize(result.size() - 4);
            if (code != 0)
                result.push_back(static_cast<wchar_t>(code));
        }
    }
    HalveBackslashes(result);
    return result;
}

int ReadRTF(clsDocu& record, FileWindow& file)
{
    String text;
    if (!ReadFirstText(file, text))
        return 0;
    TextBuffer characters(text.View());
    RemoveLineEnds(characters);
    const std::optional<std::wstring_view> info = FindRTFInfo(characters);
    if (!info)
        return 0;
    RTFGroups groups(DecodeRTF(*info));
    while (const std::optional<RTFGroups::Group> group = groups.Take())
        TakeGroup(record, *group);
    return 0;
}

} // namespace qx
