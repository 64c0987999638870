#include "core/text/text_format.h"

#include <wchar.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace qx
{

namespace
{

// Returns true for the characters that may appear between `%` and the letter of a conversion. The formatters differ in
// the order they accept; this includes all of them, so that no form of %n is overlooked.
constexpr bool IsModifier(wchar_t c)
{
    switch (c)
    {
    case L'-':
    case L'+':
    case L' ':
    case L'#':
    case L'.':
    case L'*':
    case L'h':
    case L'l':
    case L'L':
    case L'w':
    case L'F':
    case L'N':
    case L'I':
    case L'T':
    case L'j':
    case L't':
    case L'z':
        return true;
    default:
        return c >= L'0' && c <= L'9';
    }
}

// A part of a format that must be replaced before the runtime library sees it.
struct Replacement
{
    const wchar_t* begin = nullptr; // null if there is none
    const wchar_t* end = nullptr;
    bool isCount = false; // a %n of any size; otherwise the T of a %Ts
};

Replacement FindReplacement(const wchar_t* format)
{
    while ((format = wcschr(format, L'%')) != nullptr)
    {
        const wchar_t* const begin = format++;
        const wchar_t* ownWidth = nullptr;
        for (; IsModifier(*format); ++format)
            if (*format == L'T')
                ownWidth = format;
        if (*format == L'n')
            return {begin, format + 1, true};
        if (ownWidth && ownWidth + 1 == format && *format != 0 && wcschr(L"sScC", *format))
            return {ownWidth, format, false};
        if (*format != 0)
            ++format;
    }
    return {};
}

// A copy of a format that is safe to pass to the runtime library. `%Ts`, text of the format's own width, becomes `%ls`,
// because not every runtime library supports it. `%n` writes through a pointer argument, so a format from an untrusted
// source could overwrite memory. It becomes a conversion that takes the same arguments and writes nothing.
class PortableFormat
{
public:
    explicit PortableFormat(const wchar_t* format) : _format(format)
    {
        Replacement found = FindReplacement(format);
        if (!found.begin)
            return;
        // The longest replacement has six characters for each character that it replaces.
        _copy = std::make_unique_for_overwrite<wchar_t[]>(6 * wcslen(format) + 1);
        wchar_t* target = _copy.get();
        for (; found.begin; found = FindReplacement(format))
        {
            target = Append(target, std::wstring_view(format, static_cast<std::size_t>(found.begin - format)));
            if (found.isCount)
                target = AppendSkippedArguments(target, found);
            else
                *target++ = L'l';
            format = found.end;
        }
        *Append(target, format) = 0;
        _format = _copy.get();
    }

    const wchar_t* Text() const { return _format; }

private:
    static wchar_t* Append(wchar_t* target, std::wstring_view text)
    {
        return std::copy(text.begin(), text.end(), target);
    }

    // Appends conversions that skip the arguments of a %n. `%.0s` takes any argument without reading it, because all
    // arguments are passed in slots of the same size.
    static wchar_t* AppendSkippedArguments(wchar_t* target, const Replacement& count)
    {
        constexpr std::wstring_view kSkipped = L"%.0s";
        for (const wchar_t* c = count.begin; c != count.end; ++c)
            if (*c == L'*')
                target = Append(target, kSkipped);
        return Append(target, kSkipped);
    }

    const wchar_t* _format;
    std::unique_ptr<wchar_t[]> _copy;
};

} // namespace

int FormatBounded(wchar_t* buffer, std::size_t size, const wchar_t* format, va_list arguments)
{
    if (size == 0)
        return -1;
    buffer[0] = 0;
    const int count = _vsnwprintf(buffer, size - 1, PortableFormat(format).Text(), arguments);
    buffer[size - 1] = 0;
    return count;
}

} // namespace qx
