#include "time/date_words.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <map>
#include <mutex>

#include "base/forever.h"
#include "base/text.h"
#include "text/locale_data.h"

namespace qxplatform
{

namespace
{

bool IsLetter(char16_t unit)
{
    return u_isalpha(unit) || u_isdigit(unit);
}

void AddWord(std::vector<DateWord>& words, std::u16string text, DateWord::Kind kind, int number)
{
    while (!text.empty() && (text.back() == u'.' || text.back() == u' '))
        text.pop_back();
    std::transform(text.begin(), text.end(), text.begin(), UpperCase);
    // Words that begin with a digit, such as Japanese months, would conflict with numbers.
    if (!text.empty() && !u_isdigit(text.front()))
        words.push_back({std::move(text), kind, number});
}

std::vector<DateWord> MakeWords(const Locale& locale)
{
    std::vector<DateWord> words;
    for (const bool abbreviated : {false, true})
    {
        for (int month = 0; month < 12; ++month)
        {
            AddWord(words, MonthName(locale, month, abbreviated), DateWord::kMonth, month + 1);
            AddWord(words, MonthNameInDate(locale, month, abbreviated), DateWord::kMonth, month + 1);
        }
        for (int day = 0; day < 7; ++day)
            AddWord(words, DayName(locale, day, abbreviated), DateWord::kDayOfWeek, day);
    }
    AddWord(words, DayHalfName(locale, false), DateWord::kDayHalf, 0);
    AddWord(words, DayHalfName(locale, true), DateWord::kDayHalf, 1);
    AddWord(words, u"AM", DateWord::kDayHalf, 0);
    AddWord(words, u"PM", DateWord::kDayHalf, 1);
    std::stable_sort(
        words.begin(), words.end(), [](const DateWord& a, const DateWord& b) { return a.text.size() > b.text.size(); });
    return words;
}

bool BeginsWith(std::u16string_view text, const std::u16string& word)
{
    return text.size() >= word.size() &&
           std::equal(word.begin(), word.end(), text.begin(), [](char16_t a, char16_t b) { return a == UpperCase(b); });
}

} // namespace

const std::vector<DateWord>& DateWordsOf(const Locale& locale)
{
    struct Known
    {
        Mutex mutex;
        std::map<const Locale*, std::vector<DateWord>> words; // elements don't move
    };
    static constinit Forever<Known> theKnown;
    Known& known = theKnown.Get();
    const std::lock_guard lock(known.mutex);
    const auto [entry, isNew] = known.words.try_emplace(&locale);
    if (isNew)
        entry->second = MakeWords(locale);
    return entry->second;
}

const DateWord* FindDateWord(const Locale& locale, std::u16string_view text)
{
    for (const DateWord& word : DateWordsOf(locale))
        if (BeginsWith(text, word.text) && (text.size() == word.text.size() || !IsLetter(text[word.text.size()])))
            return &word;
    return nullptr;
}

} // namespace qxplatform
