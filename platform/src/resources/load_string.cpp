// Texts in string tables.

#include <libloaderapi.h>
#include <winbase.h>
#include <winuser.h>

#include <algorithm>
#include <cstring>

#include "base/fail.h"

namespace
{

// A block contains the texts of 16 ids, each preceded by its length in characters.
constexpr UINT kTextsPerBlock = 16;

struct TextInBlock
{
    const wchar_t* text = nullptr;
    std::size_t length = 0;
};

TextInBlock FindText(const WORD* block, std::size_t units, UINT index)
{
    for (std::size_t at = 0; at < units; --index)
    {
        const std::size_t length = block[at++];
        if (length > units - at)
            break;
        if (index == 0)
            return {reinterpret_cast<const wchar_t*>(block + at), length};
        at += length;
    }
    return {};
}

} // namespace

// With a size of 0, the buffer receives a pointer to the text in the image, which is not terminated.
int WINAPI LoadStringW(HINSTANCE hInstance, UINT uID, LPWSTR lpBuffer, int cchBufferMax)
{
    if (lpBuffer == nullptr || cchBufferMax < 0)
        return qxplatform::Fail(ERROR_INVALID_PARAMETER);
    const HRSRC resource = FindResourceW(hInstance, MAKEINTRESOURCEW(uID / kTextsPerBlock + 1), RT_STRING);
    if (resource == nullptr)
        return 0;
    const auto* const block = static_cast<const WORD*>(LockResource(LoadResource(hInstance, resource)));
    const TextInBlock found = FindText(block, SizeofResource(hInstance, resource) / sizeof(WORD), uID % kTextsPerBlock);
    if (cchBufferMax == 0)
    {
        std::memcpy(lpBuffer, &found.text, sizeof found.text);
        return static_cast<int>(found.length);
    }
    const std::size_t length = std::min(found.length, static_cast<std::size_t>(cchBufferMax) - 1);
    *std::copy_n(found.text, length, lpBuffer) = 0;
    return static_cast<int>(length);
}
