// Arbitrary bytes as text of any code page; the first byte selects the page. The size returned by a measuring call must
// be the size used, smaller buffers must be refused, and text that a page can represent must survive a round trip.
#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <vector>

namespace
{

constexpr UINT kPages[] = {
    CP_UTF8, CP_UTF7, 932, 936, 949, 950, 1252, 1255, 1258, 50220, 50221, 50222, 50225, 51932, 51949, 52936};
// In these pages, text may contain what looks like a change of the character set.
constexpr UINT kFirstShifted = 50220, kLastShifted = 50225, kHz = 52936;

void Require(bool condition)
{
    if (!condition)
        std::abort();
}

// Calls convert(buffer, size) three times: for the size, with a buffer of that size, and with one that is too small.
template <class Unit, class Convert>
std::vector<Unit> Converted(Convert convert)
{
    const int size = convert(nullptr, 0);
    std::vector<Unit> units(static_cast<std::size_t>(size));
    if (size > 0)
        Require(convert(units.data(), size) == size);
    if (size > 1)
    {
        std::vector<Unit> cut(units.size() - 1);
        Require(convert(cut.data(), size - 1) == 0 && GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    }
    return units;
}

std::vector<wchar_t> Decoded(UINT page, const char* bytes, std::size_t count, DWORD flags = 0)
{
    return Converted<wchar_t>([&](wchar_t* buffer, int size)
        { return MultiByteToWideChar(page, flags, bytes, static_cast<int>(count), buffer, size); });
}

std::vector<char> Encoded(UINT page, const std::vector<wchar_t>& text, DWORD flags, BOOL* isReplaced)
{
    return Converted<char>(
        [&](char* buffer, int size)
        {
            return WideCharToMultiByte(
                page, flags, text.data(), static_cast<int>(text.size()), buffer, size, nullptr, isReplaced);
        });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const UINT page = kPages[data[0] % std::size(kPages)];
    const auto* const bytes = reinterpret_cast<const char*>(data + 1);
    const std::vector<wchar_t> text = Decoded(page, bytes, size - 1);

    const bool isUnicode = page == CP_UTF8 || page == CP_UTF7;
    const bool isShifted = (page >= kFirstShifted && page <= kLastShifted) || page == kHz;
    if (page != CP_UTF7 && !isShifted)
    {
        const std::vector<wchar_t> strict = Decoded(page, bytes, size - 1, MB_ERR_INVALID_CHARS);
        Require(strict.empty() || strict == text);
    }
    if (text.empty()) // only a change of the character set
    {
        Require(isShifted || page == CP_UTF7);
        return 0;
    }
    BOOL isReplaced = FALSE;
    const DWORD flags = isUnicode || isShifted ? 0 : WC_NO_BEST_FIT_CHARS;
    const std::vector<char> written = Encoded(page, text, flags, isUnicode ? nullptr : &isReplaced);
    const std::vector<wchar_t> back = Decoded(page, written.data(), written.size());
    if (!isShifted && !isReplaced)
        Require(back == text);
    return 0;
}
