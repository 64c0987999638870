#include "text/message_text.h"

#include <wchar.h>
#include <winerror.h>

#include <vector>

#include "base/text.h"

namespace qxplatform
{

namespace
{

// Sufficient for inserts with a format; an insert whose width exceeds it produces an error.
constexpr std::size_t kMaxFormatted = 0x10000;

bool IsDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

// A conversion specification that an insert may contain. It determines the argument's type, so all others are rejected.
class InsertFormat
{
public:
    explicit InsertFormat(std::u16string_view text) : _rest(text)
    {
        SkipAll(u"-+ #0");
        SkipNumber();
        if (Skip(u'.'))
            SkipNumber();
        if (!SkipWord(u"I64") && !SkipWord(u"I32") && !SkipWord(u"ll"))
            Skip(u'I') || Skip(u'h') || Skip(u'l') || Skip(u'w');
        _valid = _rest.size() == 1 && std::u16string_view(u"diouxXcCsSp").find(_rest[0]) != std::u16string_view::npos;
    }

    bool IsValid() const { return _valid; }
    unsigned Stars() const { return _stars; }

private:
    bool Skip(char16_t unit)
    {
        const bool found = !_rest.empty() && _rest[0] == unit;
        _rest.remove_prefix(found);
        return found;
    }

    bool SkipWord(std::u16string_view word)
    {
        const bool found = _rest.starts_with(word);
        _rest.remove_prefix(found ? word.size() : 0);
        return found;
    }

    void SkipAll(std::u16string_view units)
    {
        while (!_rest.empty() && units.find(_rest[0]) != units.npos)
            _rest.remove_prefix(1);
    }

    void SkipNumber()
    {
        if (Skip(u'*'))
            ++_stars;
        else
            SkipAll(u"0123456789");
    }

    std::u16string_view _rest;
    unsigned _stars = 0;
    bool _valid = false;
};

class Expansion
{
public:
    Expansion(std::u16string_view text, bool withInserts, MessageArguments& arguments)
        : _rest(text),
          _withInserts(withInserts),
          _arguments(arguments)
    {
    }

    DWORD Run()
    {
        while (!_rest.empty() && !_ended && _error == ERROR_SUCCESS)
        {
            const char16_t unit = Take();
            if (unit == u'%')
                PutEscape();
            else if (unit == u'\r' || unit == u'\n')
                PutBreakOfText(unit);
            else
                _out += unit;
        }
        return _error;
    }

    std::u16string Text() { return std::move(_out); }

private:
    char16_t Take()
    {
        const char16_t unit = _rest[0];
        _rest.remove_prefix(1);
        return unit;
    }

    void PutBreak() { _out += u"\r\n"; }

    // The text itself may contain line breaks of any system.
    void PutBreakOfText(char16_t unit)
    {
        if (unit == u'\r' && !_rest.empty() && _rest[0] == u'\n')
            _rest.remove_prefix(1);
        PutBreak();
    }

    void PutEscape()
    {
        if (_rest.empty())
        {
            _error = ERROR_INVALID_PARAMETER;
            return;
        }
        const char16_t unit = _rest[0];
        if (unit >= u'1' && unit <= u'9')
        {
            if (_withInserts)
                PutInsert();
            else
                _out += u'%'; // the number follows as plain text
            return;
        }
        _rest.remove_prefix(1);
        switch (unit)
        {
        case u'0':
            _ended = true;
            break;
        case u'n':
            PutBreak();
            break;
        case u'r':
            _out += u'\r';
            break;
        case u't':
            _out += u'\t';
            break;
        default:
            PutLiteral(unit);
        }
    }

    // Appends the second character of "%%", "%.", "%!" or "% ". The sequence is kept unchanged if inserts are.
    void PutLiteral(char16_t unit)
    {
        if (!_withInserts)
            _out += u'%';
        _out += unit == u'b' && _withInserts ? u' ' : unit;
    }

    void PutInsert()
    {
        unsigned number = static_cast<unsigned>(Take() - u'0');
        if (!_rest.empty() && IsDigit(_rest[0]))
            number = number * 10 + static_cast<unsigned>(Take() - u'0');
        std::u16string_view format = u"s";
        if (!_rest.empty() && _rest[0] == u'!')
        {
            const std::size_t end = _rest.find(u'!', 1);
            if (end == _rest.npos)
            {
                _error = ERROR_INVALID_PARAMETER;
                return;
            }
            format = _rest.substr(1, end - 1);
            _rest.remove_prefix(end + 1);
        }
        if (!_arguments.Any())
            _error = ERROR_INVALID_PARAMETER;
        else if (format == u"s")
            PutText(_arguments.Read(number, 0).value);
        else
            PutFormatted(format, number);
    }

    void PutText(DWORD_PTR argument)
    {
        const auto text = reinterpret_cast<LPCWSTR>(argument);
        _out += text != nullptr ? View(text) : u"(null)";
    }

    void PutFormatted(std::u16string_view format, unsigned number)
    {
        const InsertFormat parsed(format);
        if (!parsed.IsValid())
        {
            _out += format;
            return;
        }
        const std::u16string conversion = u"%" + std::u16string(format);
        std::vector<wchar_t> buffer(256);
        int length = -1;
        const MessageArguments::Insert insert = _arguments.Read(number, parsed.Stars());
        while ((length = Format(buffer, Wide(conversion), parsed.Stars(), insert)) < 0)
        {
            if (buffer.size() >= kMaxFormatted)
            {
                _error = ERROR_INVALID_PARAMETER;
                return;
            }
            buffer.resize(buffer.size() * 2);
        }
        _out += View(buffer.data(), static_cast<std::size_t>(length));
    }

    static int Format(
        std::vector<wchar_t>& buffer, LPCWSTR conversion, unsigned stars, const MessageArguments::Insert& insert)
    {
        switch (stars)
        {
        case 0:
            return _snwprintf(buffer.data(), buffer.size(), conversion, insert.value);
        case 1:
            return _snwprintf(buffer.data(), buffer.size(), conversion, insert.stars[0], insert.value);
        default:
            return _snwprintf(buffer.data(), buffer.size(), conversion, insert.stars[0], insert.stars[1], insert.value);
        }
    }

    std::u16string_view _rest;
    const bool _withInserts;
    MessageArguments& _arguments;
    std::u16string _out;
    bool _ended = false;
    DWORD _error = ERROR_SUCCESS;
};

} // namespace

DWORD ExpandMessage(std::u16string_view text, bool withInserts, MessageArguments& arguments, std::u16string& expanded)
{
    Expansion expansion(text, withInserts, arguments);
    const DWORD error = expansion.Run();
    expanded = expansion.Text();
    return error;
}

} // namespace qxplatform
