#include "text/table_page.h"

#include <stringapiset.h>

#include <algorithm>

#include "text/ascii.h"

namespace qxplatform
{

bool TablePage::Decode(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const
{
    return _tables.pairs.empty() ? DecodeSingle(bytes, onInvalid, out) : DecodeDouble(bytes, onInvalid, out);
}

bool TablePage::DecodeSingle(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const
{
    const auto isStrict = [this](char byte)
    {
        return _tables.strict[static_cast<unsigned char>(byte)];
    };
    if (onInvalid == OnInvalid::Refuse && std::any_of(bytes.begin(), bytes.end(), isStrict))
        return false;
    out.PutAll(
        bytes.data(), bytes.size(), [this](char byte) { return _tables.single[static_cast<unsigned char>(byte)]; });
    return true;
}

bool TablePage::DecodeDouble(std::string_view bytes, OnInvalid onInvalid, WideOutput& out) const
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
            const auto byte = static_cast<unsigned char>(*next++);
            wchar_t unit = _tables.single[byte];
            bool invalid = _tables.strict[byte];
            if (_tables.lead[byte])
            {
                // A lead byte consumes any following byte except zero, so that a damaged text doesn't lose its
                // terminator.
                const bool hasTrail = next != end && *next != 0;
                if (hasTrail)
                    unit = _tables.pairs[(byte - 0x80u) << 8 | static_cast<unsigned char>(*next++)];
                invalid = unit == PageTables::kUndefined;
                if (invalid)
                    unit = _tables.undefinedCharacter;
            }
            if (invalid && onInvalid == OnInvalid::Refuse)
                return false;
            out.Put(unit);
        }
    }
    return true;
}

EncodeResult TablePage::Encode(std::wstring_view text, const Encoding& encoding, ByteOutput& out) const
{
    const std::vector<std::uint16_t>& codes = encoding.bestFit ? _tables.fitted : _tables.exact;
    EncodeResult result;
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
    while (next != end)
    {
        if (_tables.asciiTransparent)
        {
            const std::size_t ascii = AsciiRun(next, end);
            out.PutAll(next, ascii, Narrow);
            next += ascii;
        }
        for (; next != end && (*next >= 0x80 || !_tables.asciiTransparent); ++next)
        {
            const std::uint16_t code = codes[*next];
            if (code == 0 && *next != 0)
            {
                result.replaced = true;
                for (const char byte : encoding.replacement)
                    out.Put(byte);
                continue;
            }
            if (code > 0xff)
                out.Put(static_cast<char>(code >> 8));
            out.Put(static_cast<char>(code & 0xff));
        }
    }
    return result;
}

DWORD TablePage::DecodeFlags() const
{
    return MB_PRECOMPOSED | MB_ERR_INVALID_CHARS;
}

DWORD TablePage::EncodeFlags() const
{
    return WC_NO_BEST_FIT_CHARS;
}

} // namespace qxplatform
