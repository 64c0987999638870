#include "locale/format_pattern.h"

#include "core/pattern/regex.h"

#include <algorithm>

namespace qx
{

namespace
{

// While the letters are replaced, each quoted literal of the format is represented by one unit of the private use area.
constexpr wchar_t kFirstLiteral = 0xF000;

String TakeLiteralsOut(const String& format, WCValSList<String>& literals)
{
    clsRegEx quoted(L"'(.*?)'", 0);
    return quoted.GSub(format,
        [&literals](const clsRegExMatchList& matches, String& replacement)
        {
            literals.Append(matches.Count() > 1 ? matches[1].text : String());
            replacement.Fill(static_cast<wchar_t>(kFirstLiteral + literals.Count()), 1);
            return true;
        });
}

// Replaces each unit with its literal. If the format itself contained such a unit, the literal with the nearest number
// is inserted.
String PutLiteralsBack(const String& pattern, const WCValSList<String>& literals)
{
    clsRegEx units(L"([\\x{f000}-\\x{f0ff}])", 0);
    return units.GSub(pattern,
        [&literals](const clsRegExMatchList& matches, String& replacement)
        {
            const int number = matches[0].text.CharAt(0) - kFirstLiteral;
            const int count = static_cast<int>(literals.Count());
            const String* const literal = count > 0 ? literals.At(std::clamp(number, 1, count) - 1) : nullptr;
            replacement = literal != nullptr ? clsRegEx::Quote(*literal) : String();
            return true;
        });
}

const wchar_t* PatternOfTimeLetter(wchar_t letter)
{
    switch (letter)
    {
    case L'h':
        return L"(0?[1-9]|1[012])";
    case L'H':
        return L"([01]?[0-9]|2[0-3])";
    case L'm':
    case L's':
        return L"([0-5]?[0-9])";
    case L't':
        return L"([AP]M)?";
    default:
        return nullptr;
    }
}

const wchar_t* PatternOfDateLetter(wchar_t letter)
{
    switch (letter)
    {
    case L'd':
        return L"([012]?[1-9]|3[01])";
    case L'M':
        return L"(0?[0-9]|1[0-2])";
    default:
        return L"(\\d{1,4})";
    }
}

} // namespace

TimePattern PatternOfTimeFormat(const String& format)
{
    TimePattern result;
    WCValSList<String> literals;
    std::size_t groups = 0;
    clsRegEx tokens(L"([^hHmst]+)?(h{1,2}|H{1,2}|m{1,2}|s{1,2}|t{1,2})", 0);
    const String withTokens = tokens.GSub(TakeLiteralsOut(format, literals),
        [&](const clsRegExMatchList& matches, String& replacement)
        {
            const wchar_t letter = matches[2].text.CharAt(1);
            const wchar_t* const pattern = PatternOfTimeLetter(letter);
            if (pattern == nullptr)
                return true;
            ++groups;
            if (letter == L't' && !result.marker)
                result.marker = groups;
            const String prefixed = clsRegEx::Quote(matches[1].text) + pattern;
            replacement = letter == L's' ? L"(?:" + prefixed + L")?" : prefixed;
            return true;
        });
    result.text = PutLiteralsBack(withTokens, literals);
    return result;
}

String PatternOfDateFormat(const String& format)
{
    WCValSList<String> literals;
    clsRegEx tokens(L"([^dMy]?)([dM]{1,2}|y{1,4})", 0);
    const String withTokens = tokens.GSub(TakeLiteralsOut(format, literals),
        [](const clsRegExMatchList& matches, String& replacement)
        {
            replacement = clsRegEx::Quote(matches[1].text) + PatternOfDateLetter(matches[2].text.CharAt(0));
            return true;
        });
    return PutLiteralsBack(withTokens, literals);
}

} // namespace qx
