#include "text/utf7_page.h"

namespace qxplatform
{

namespace
{

constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Characters that represent themselves: letters, digits, set D of the standard, white space, and the terminator.
constexpr std::string_view kDirect("'(),-./:?\t\n\r \0", 15);

bool IsDirect(wchar_t unit)
{
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || (unit >= '0' && unit <= '9') ||
           (unit < 0x80 && kDirect.find(static_cast<char>(unit)) != kDirect.npos);
}

// Collects the units of a shifted run as sextets.
class Base64Writer
{
public:
    explicit Base64Writer(ByteOutput& out) : _out(out) {}

    void Put(wchar_t unit)
    {
        _bits = _bits << 16 | unit;
        for (_count += 16; _count >= 6; _count -= 6)
            _out.Put(kBase64[_bits >> (_count - 6) & 0x3f]);
    }

    void Flush()
    {
        if (_count > 0)
            _out.Put(kBase64[_bits << (6 - _count) & 0x3f]);
    }

private:
    ByteOutput& _out;
    unsigned _bits = 0;
    int _count = 0;
};

} // namespace

bool Utf7Page::Decode(std::string_view bytes, OnInvalid, WideOutput& out) const
{
    for (std::size_t i = 0; i < bytes.size();)
    {
        const char byte = bytes[i++];
        if (byte != '+')
        {
            out.Put(static_cast<unsigned char>(byte));
            continue;
        }
        if (i < bytes.size() && bytes[i] == '-')
        {
            out.Put(L'+');
            ++i;
            continue;
        }
        unsigned bits = 0;
        int count = 0;
        std::size_t digit;
        // Remaining bits at the end of a run are padding.
        for (; i < bytes.size() && (digit = kBase64.find(bytes[i])) != kBase64.npos; ++i)
        {
            bits = bits << 6 | static_cast<unsigned>(digit);
            count += 6;
            if (count >= 16)
            {
                count -= 16;
                out.Put(static_cast<wchar_t>(bits >> count & 0xffff));
            }
        }
        if (i < bytes.size() && bytes[i] == '-')
            ++i;
    }
    return true;
}

EncodeResult Utf7Page::Encode(std::wstring_view text, const Encoding&, ByteOutput& out) const
{
    for (std::size_t i = 0; i < text.size();)
    {
        if (IsDirect(text[i]))
        {
            out.Put(static_cast<char>(text[i++]));
            continue;
        }
        out.Put('+');
        if (text[i] == L'+')
        {
            ++i;
        }
        else
        {
            Base64Writer writer(out);
            for (; i < text.size() && !IsDirect(text[i]); ++i)
                writer.Put(text[i]);
            writer.Flush();
        }
        // The system explicitly ends every run, even where the standard permits an implicit end.
        out.Put('-');
    }
    return {};
}

} // namespace qxplatform
