// Length-prefixed strings.
#include <oleauto.h>

#include <wchar.h>

#include <cstdlib>
#include <cstring>

namespace
{

// The length occupies the last 4 bytes before the text; 8 bytes keep the text aligned as on the system.
constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kLengthSize = sizeof(UINT);
constexpr std::size_t kMaxBytes = UINT32_MAX - kHeaderSize - sizeof(wchar_t) - 1;

char* BytesOf(BSTR bstr)
{
    return reinterpret_cast<char*>(bstr);
}

BSTR Allocate(const void* source, std::size_t size)
{
    if (size > kMaxBytes)
        return nullptr;
    // The bytes are followed by a terminating zero character, even if their number is odd.
    const auto block = static_cast<char*>(std::malloc(kHeaderSize + size + sizeof(wchar_t)));
    if (block == nullptr)
        return nullptr;
    const UINT length = static_cast<UINT>(size);
    std::memcpy(block + kHeaderSize - kLengthSize, &length, kLengthSize);
    if (source != nullptr)
        std::memcpy(block + kHeaderSize, source, size);
    std::memset(block + kHeaderSize + size, 0, sizeof(wchar_t));
    return reinterpret_cast<BSTR>(block + kHeaderSize);
}

} // namespace

BSTR WINAPI SysAllocString(const OLECHAR* text)
{
    return text != nullptr ? Allocate(text, wcslen(text) * sizeof(OLECHAR)) : nullptr;
}

BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length)
{
    return Allocate(text, std::size_t{length} * sizeof(OLECHAR));
}

BSTR WINAPI SysAllocStringByteLen(LPCSTR bytes, UINT length)
{
    return Allocate(bytes, length);
}

INT WINAPI SysReAllocStringLen(BSTR* bstr, const OLECHAR* text, UINT length)
{
    if (bstr == nullptr)
        return FALSE;
    const BSTR fresh = SysAllocStringLen(text, length);
    if (fresh == nullptr)
        return FALSE;
    if (text == nullptr && *bstr != nullptr)
    {
        // If the text is null, the old characters are kept and only the length changes.
        const UINT oldLength = SysStringLen(*bstr);
        std::memcpy(fresh, *bstr, (oldLength < length ? oldLength : length) * sizeof(OLECHAR));
    }
    SysFreeString(*bstr);
    *bstr = fresh;
    return TRUE;
}

void WINAPI SysFreeString(BSTR bstr)
{
    if (bstr != nullptr)
        std::free(BytesOf(bstr) - kHeaderSize);
}

UINT WINAPI SysStringLen(BSTR bstr)
{
    return SysStringByteLen(bstr) / static_cast<UINT>(sizeof(OLECHAR));
}

UINT WINAPI SysStringByteLen(BSTR bstr)
{
    if (bstr == nullptr)
        return 0;
    UINT length;
    std::memcpy(&length, BytesOf(bstr) - kLengthSize, kLengthSize);
    return length;
}
