// Identifiers as text: {xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}.
#include <combaseapi.h>

namespace
{

constexpr int kTextLength = 38;
constexpr wchar_t kDigits[] = L"0123456789ABCDEF";

// Each pair of digits stands for a byte; these are the bytes' places in the record, whose numbers are little-endian.
constexpr char kShape[] = "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
constexpr unsigned char kByteOrder[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
static_assert(sizeof(kShape) == kTextLength + 1);

int DigitValue(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    return -1;
}

bool Parse(const wchar_t* text, unsigned char (&bytes)[16])
{
    unsigned digit = 0;
    for (int i = 0; i < kTextLength; ++i)
    {
        if (kShape[i] != 'x')
        {
            if (text[i] != kShape[i])
                return false;
            continue;
        }
        const int value = DigitValue(text[i]);
        if (value < 0)
            return false;
        unsigned char& byte = bytes[kByteOrder[digit / 2]];
        byte = static_cast<unsigned char>(digit % 2 == 0 ? value << 4 : byte | value);
        ++digit;
    }
    return text[kTextLength] == 0;
}

} // namespace

int WINAPI StringFromGUID2(REFGUID guid, LPOLESTR text, int size)
{
    if (text == nullptr || size <= kTextLength)
        return 0;
    unsigned char bytes[16];
    memcpy(bytes, &guid, sizeof(bytes));
    unsigned digit = 0;
    for (int i = 0; i < kTextLength; ++i)
    {
        if (kShape[i] != 'x')
        {
            text[i] = static_cast<wchar_t>(kShape[i]);
            continue;
        }
        const unsigned char byte = bytes[kByteOrder[digit / 2]];
        text[i] = kDigits[digit % 2 == 0 ? byte >> 4 : byte & 0xF];
        ++digit;
    }
    text[kTextLength] = 0;
    return kTextLength + 1;
}

HRESULT WINAPI CLSIDFromString(LPCOLESTR text, CLSID* clsid)
{
    if (clsid == nullptr)
        return E_INVALIDARG;
    *clsid = CLSID_NULL;
    if (text == nullptr)
        return S_OK;
    unsigned char bytes[16];
    // Names of programs aren't looked up: no class is registered here.
    if (!Parse(text, bytes))
        return CO_E_CLASSSTRING;
    memcpy(clsid, bytes, sizeof(bytes));
    return S_OK;
}
