#include "variant/number_reader.h"

#include <wctype.h>
#include <winerror.h>

#include <algorithm>

#include "text/locale_data.h"

namespace qxplatform
{

namespace
{

bool IsDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

bool IsBlank(char16_t c)
{
    return iswspace(static_cast<wint_t>(c)) != 0;
}

class NumberReader
{
public:
    NumberReader(std::u16string_view text, const NumberSymbols& symbols, ReadNumber& result)
        : _rest(text),
          _symbols(symbols),
          _number(result)
    {
    }

    HRESULT Read()
    {
        while (TakeBlanks() || TakeSign() || TakeOpeningBracket() || TakeCurrency())
        {
        }
        if (!_rest.empty() && _rest.front() == u'&')
            return ReadBits();
        if (!TakeDigits() || !TakeExponent())
            return DISP_E_TYPEMISMATCH;
        while (TakeBlanks() || TakeSign() || TakeClosingBracket() || TakeCurrency())
        {
        }
        return _rest.empty() && !_openBracket ? S_OK : DISP_E_TYPEMISMATCH;
    }

private:
    bool Take(std::u16string_view symbol)
    {
        if (symbol.empty() || !_rest.starts_with(symbol))
            return false;
        _rest.remove_prefix(symbol.size());
        return true;
    }

    bool TakeBlanks()
    {
        const auto end = std::find_if_not(_rest.begin(), _rest.end(), IsBlank);
        const bool any = end != _rest.begin();
        _rest.remove_prefix(static_cast<std::size_t>(end - _rest.begin()));
        return any;
    }

    bool TakeSign()
    {
        const bool minus = !_hasSign && Take(u"-");
        if (!minus && (_hasSign || !Take(u"+")))
            return false;
        _hasSign = true;
        _number.negative |= minus;
        return true;
    }

    bool TakeOpeningBracket()
    {
        if (_hasBracket || !Take(u"("))
            return false;
        _hasBracket = _openBracket = _number.negative = true;
        return true;
    }

    bool TakeClosingBracket()
    {
        if (!_openBracket || !Take(u")"))
            return false;
        _openBracket = false;
        return true;
    }

    bool TakeCurrency()
    {
        if (_hasCurrency || !Take(_symbols.currency))
            return false;
        _hasCurrency = true;
        return true;
    }

    // Skips a group separator. If it is a blank, any kind of blank is accepted.
    bool TakeGroupSeparator()
    {
        if (Take(_symbols.group))
            return true;
        const bool groupsByBlanks = !_symbols.group.empty() && IsBlank(_symbols.group.front());
        return groupsByBlanks && (Take(u" ") || Take(u"\u00a0") || Take(u"\u202f"));
    }

    bool TakeDigits()
    {
        bool any = false;
        bool behindPoint = false;
        for (; !_rest.empty(); _rest.remove_prefix(1))
        {
            while (any && TakeGroupSeparator())
            {
            }
            if (!behindPoint && Take(_symbols.decimal))
                behindPoint = true;
            if (_rest.empty() || !IsDigit(_rest.front()))
                break;
            any = true;
            if (_rest.front() != u'0' || !_number.digits.empty())
                _number.digits += static_cast<char>(_rest.front());
            _number.exponent -= behindPoint;
        }
        return any;
    }

    // Parses a complete exponent, or nothing.
    bool TakeExponent()
    {
        if (!Take(u"e") && !Take(u"E"))
            return true;
        const bool negative = Take(u"-");
        if (!negative)
            Take(u"+");
        if (_rest.empty() || !IsDigit(_rest.front()))
            return false;
        // Beyond any numeric range, but small enough to be added to the number of digits in a long text.
        constexpr long long kLargest = 1LL << 40;
        long long exponent = 0;
        for (; !_rest.empty() && IsDigit(_rest.front()); _rest.remove_prefix(1))
            exponent = std::min(exponent * 10 + (_rest.front() - u'0'), kLargest);
        _number.exponent += negative ? -exponent : exponent;
        return true;
    }

    HRESULT ReadBits()
    {
        const bool hexadecimal = Take(u"&H") || Take(u"&h");
        if (_hasSign || _hasBracket || _hasCurrency || (!hexadecimal && !Take(u"&O") && !Take(u"&o")))
            return DISP_E_TYPEMISMATCH;
        const int shift = hexadecimal ? 4 : 3;
        bool any = false;
        for (; !_rest.empty(); _rest.remove_prefix(1), any = true)
        {
            const int digit = DigitOf(_rest.front());
            if (digit >= 1 << shift)
                break;
            if (_number.bits >> (64 - shift) != 0)
                return DISP_E_OVERFLOW;
            _number.bits = _number.bits << shift | static_cast<unsigned>(digit);
        }
        TakeBlanks();
        _number.isBits = true;
        return any && _rest.empty() ? S_OK : DISP_E_TYPEMISMATCH;
    }

    // Returns 16 if the character is not a digit.
    static int DigitOf(char16_t c)
    {
        constexpr std::u16string_view kDigits = u"0123456789abcdef";
        const std::size_t digit = kDigits.find(c >= u'A' && c <= u'F' ? static_cast<char16_t>(c - u'A' + u'a') : c);
        return digit != kDigits.npos ? static_cast<int>(digit) : 16;
    }

    std::u16string_view _rest;
    const NumberSymbols& _symbols;
    ReadNumber& _number;
    bool _hasSign = false;
    bool _hasBracket = false;
    bool _openBracket = false;
    bool _hasCurrency = false;
};

} // namespace

NumberSymbols SymbolsOf(const Locale& locale)
{
    return {DecimalSeparator(locale), GroupSeparator(locale), CurrencySymbol(locale)};
}

HRESULT ReadNumberText(std::u16string_view text, const NumberSymbols& symbols, ReadNumber& result)
{
    result = {};
    return NumberReader(text, symbols, result).Read();
}

} // namespace qxplatform
