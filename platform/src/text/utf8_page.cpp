#include "text/utf8_page.h"

#include <stringapiset.h>

#include "text/ascii.h"

namespace qxplatform
{

namespace
{

constexpr wchar_t kReplacementCharacter = 0xfffd;

bool IsContinuation(unsigned char byte)
{
    return (byte & 0xc0) == 0x80;
}

// Returns the length announced by a lead byte, or 0 if the byte can't begin a character: continuation bytes, and the
// lead bytes of overlong forms (C0, C1) and of values beyond U+10FFFF (F5 and up).
int SequenceLength(unsigned char lead)
{
    if (lead >= 0xc2 && lead <= 0xdf)
        return 2;
    if (lead >= 0xe0 && lead <= 0xef)
        return 3;
    if (lead >= 0xf0 && lead <= 0xf4)
        return 4;
    return 0;
}

// Returns true if the second byte would form an overlong sequence, a surrogate or a value beyond U+10FFFF.
bool IsForbiddenPair(unsigned char lead, unsigned char second)
{
    switch (lead)
    {
    case 0xe0:
        return second < 0xa0;
    case 0xed:
        return second >= 0xa0;
    case 0xf0:
        return second < 0x90;
    case 0xf4:
        return second >= 0x90;
    default:
        return false;
    }
}

struct Sequence
{
    char32_t value;
    int length; // of the consumed bytes, also for an invalid sequence
    bool valid;
};

// Reads a sequence. The system replaces an ill-formed one as a whole: the lead byte with the continuation bytes it can
// have. A forbidden second byte still belongs to its lead byte; the bytes after it don't.
Sequence ReadSequence(const char* next, const char* end)
{
    const auto byte = [next](int i)
    {
        return static_cast<unsigned char>(next[i]);
    };
    const int wanted = SequenceLength(byte(0));
    if (wanted == 0)
        return {0, 1, false};
    char32_t value = byte(0) & (0x7fu >> wanted);
    for (int i = 1; i < wanted; ++i)
    {
        if (end - next <= i || !IsContinuation(byte(i)))
            return {0, i, false};
        if (i == 1 && IsForbiddenPair(byte(0), byte(1)))
            return {0, 2, false};
        value = value << 6 | (byte(i) & 0x3fu);
    }
    return {value, wanted, true};
}

void PutCharacter(char32_t value, WideOutput& out)
{
    if (value < 0x10000)
    {
        out.Put(static_cast<wchar_t>(value));
        return;
    }
    out.Put(static_cast<wchar_t>(0xd7c0 + (value >> 10)));
    out.Put(static_cast<wchar_t>(0xdc00 | (value & 0x3ff)));
}

bool IsHighSurrogate(wchar_t unit)
{
    return (unit & 0xfc00) == 0xd800;
}

bool IsLowSurrogate(wchar_t unit)
{
    return (unit & 0xfc00) == 0xdc00;
}

void PutTwo(wchar_t unit, ByteOutput& out)
{
    out.Put(static_cast<char>(0xc0 | unit >> 6));
    out.Put(static_cast<char>(0x80 | (unit & 0x3f)));
}

void PutThree(wchar_t unit, ByteOutput& out)
{
    out.Put(static_cast<char>(0xe0 | unit >> 12));
    out.Put(static_cast<char>(0x80 | (unit >> 6 & 0x3f)));
    out.Put(static_cast<char>(0x80 | (unit & 0x3f)));
}

void PutFour(wchar_t high, wchar_t low, ByteOutput& out)
{
    const char32_t value = 0x10000u + ((high & 0x3ffu) << 10) + (low & 0x3ffu);
    out.Put(static_cast<char>(0xf0 | value >> 18));
    out.Put(static_cast<char>(0x80 | (value >> 12 & 0x3f)));
    out.Put(static_cast<char>(0x80 | (value >> 6 & 0x3f)));
    out.Put(static_cast<char>(0x80 | (value & 0x3f)));
}

} // namespace

bool Utf8Page::Decode(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const
{
    const char* next = bytes.data();
    const char* const end = next + bytes.size();
    while (next != end)
    {
        const std::size_t ascii = AsciiRun(next, end);
        out.PutAll(next, ascii, Widen);
        next += ascii;
        while (next != end && static_cast<unsigned char>(*next) >= 0x80)
        {
            const Sequence sequence = ReadSequence(next, end);
            if (!sequence.valid && onInvalid == OnInvalid::Refuse)
                return false;
            PutCharacter(sequence.valid ? sequence.value : kReplacementCharacter, out);
            next += sequence.length;
        }
    }
    return true;
}

EncodeResult Utf8Page::Encode(std::wstring_view text, const Encoding& encoding, ByteOutput& out) const
{
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
    while (next != end)
    {
        const std::size_t ascii = AsciiRun(next, end);
        out.PutAll(next, ascii, Narrow);
        next += ascii;
        for (; next != end && *next >= 0x80; ++next)
        {
            if (*next < 0x800)
            {
                PutTwo(*next, out);
            }
            else if (IsHighSurrogate(*next) && end - next > 1 && IsLowSurrogate(next[1]))
            {
                PutFour(next[0], next[1], out);
                ++next;
            }
            else if ((*next & 0xf800) == 0xd800)
            {
                if (encoding.onInvalid == OnInvalid::Refuse)
                    return {.valid = false};
                PutThree(kReplacementCharacter, out);
            }
            else
            {
                PutThree(*next, out);
            }
        }
    }
    return {};
}

DWORD Utf8Page::DecodeFlags() const
{
    return MB_ERR_INVALID_CHARS;
}

DWORD Utf8Page::EncodeFlags() const
{
    return WC_ERR_INVALID_CHARS;
}

} // namespace qxplatform
