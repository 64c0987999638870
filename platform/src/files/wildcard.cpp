#include "files/wildcard.h"

#include "base/text.h"

#include <vector>

namespace qxplatform
{
namespace
{

// DOS names always had a dot before the extension. Where `*`, `?` and `.` must match as in DOS patterns, they are
// replaced by three special characters, which no name can contain.
constexpr char16_t kAnyUpToLastDot = u'<'; // `*` before a dot
constexpr char16_t kOneOrEnd = u'>';       // `?`
constexpr char16_t kDotOrEnd = u'"';       // a dot before `?` or `*`

std::u16string Translate(std::u16string_view pattern)
{
    if (pattern == u"*.*")
        return u"*";
    const std::u16string_view whole = pattern;
    pattern = pattern.substr(0, pattern.find_last_not_of(u'.') + 1); // trailing dots aren't part of a name
    std::u16string result(pattern);
    for (std::size_t index = 0; index < result.size(); ++index)
    {
        const char16_t previous = index > 0 ? pattern[index - 1] : u'\0';
        const char16_t current = pattern[index];
        if (current == u'.' && previous == u'*')
            result[index - 1] = kAnyUpToLastDot;
        if (previous == u'.' && (current == u'?' || current == u'*'))
            result[index - 1] = kDotOrEnd;
        result[index] = current == u'?' ? kOneOrEnd : UpperCase(current);
    }
    if (whole.size() > pattern.size() && !pattern.empty() && pattern.back() == u'*')
        result.back() = kAnyUpToLastDot;
    return result;
}

// Scans the name once, with the set of pattern positions that can be reached so far.
class Matcher
{
public:
    explicit Matcher(std::u16string_view pattern) : _pattern(pattern), _places(pattern.size() + 1)
    {
        _places[0] = true;
    }

    void Step(char16_t character, bool isLastDot)
    {
        PassOverNothing(character);
        std::vector<bool> next(_places.size());
        for (std::size_t place = 0; place < _pattern.size(); ++place)
        {
            if (!_places[place])
                continue;
            switch (_pattern[place])
            {
            case u'*':
                next[place] = true;
                break;
            case kAnyUpToLastDot:
                if (!isLastDot)
                    next[place] = true;
                break;
            case kOneOrEnd:
                if (character != u'.')
                    next[place + 1] = true;
                break;
            case kDotOrEnd:
                if (character == u'.')
                    next[place + 1] = true;
                break;
            default:
                if (_pattern[place] == character)
                    next[place + 1] = true;
            }
        }
        _places = std::move(next);
    }

    bool Ends()
    {
        constexpr char16_t kEndOfName = 0;
        PassOverNothing(kEndOfName);
        return _places.back();
    }

private:
    // Skips pattern elements that may match nothing before this character of the name.
    void PassOverNothing(char16_t next)
    {
        for (std::size_t place = 0; place < _pattern.size(); ++place)
        {
            const char16_t current = _pattern[place];
            const bool mayBeNothing = current == u'*' || current == kAnyUpToLastDot ||
                                      (current == kOneOrEnd && (next == 0 || next == u'.')) ||
                                      (current == kDotOrEnd && next == 0);
            if (_places[place] && mayBeNothing)
                _places[place + 1] = true;
        }
    }

    std::u16string_view _pattern;
    std::vector<bool> _places;
};

} // namespace

Wildcard::Wildcard(std::u16string_view pattern) : _pattern(Translate(pattern)) {}

bool Wildcard::Matches(std::u16string_view name) const
{
    const std::size_t lastDot = name.rfind(u'.');
    Matcher matcher(_pattern);
    for (std::size_t index = 0; index < name.size(); ++index)
        matcher.Step(UpperCase(name[index]), index == lastDot);
    return matcher.Ends();
}

} // namespace qxplatform
