// The two conversion functions: arguments, flags and results. The pages do the conversion.

#include <stringapiset.h>
#include <winerror.h>
#include <winnls.h>

#include <climits>
#include <cstring>
#include <string_view>

#include "base/fail.h"
#include "text/code_page.h"

namespace
{

using qxplatform::Fail;

// Returns the count of written or required units, or 0 with a last error.
template <class Unit>
int Finish(const qxplatform::Output<Unit>& out, bool valid)
{
    if (!valid)
        return Fail(ERROR_NO_UNICODE_TRANSLATION);
    if (!out.Fits())
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    if (out.Count() > INT_MAX)
        return Fail(ERROR_ARITHMETIC_OVERFLOW);
    return static_cast<int>(out.Count());
}

// Returns the caller's default character: one byte, or two if the first is a lead byte of the page.
std::string_view Replacement(const qxplatform::CodePage& page, const char* defaultChar)
{
    if (defaultChar == nullptr)
        return "?";
    const bool isPair = page.IsLeadByte(static_cast<unsigned char>(defaultChar[0])) && defaultChar[1] != '\0';
    return {defaultChar, isPair ? 2u : 1u};
}

} // namespace

int WINAPI MultiByteToWideChar(
    UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr, int cbMultiByte, LPWSTR lpWideCharStr, int cchWideChar)
{
    using namespace qxplatform;
    if (lpMultiByteStr == nullptr || cbMultiByte == 0 || cchWideChar < 0 ||
        (cchWideChar > 0 && (lpWideCharStr == nullptr || static_cast<const void*>(lpWideCharStr) == lpMultiByteStr)))
        return Fail(ERROR_INVALID_PARAMETER);
    const qxplatform::CodePage* const page = FindCodePage(CodePage);
    if (page == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    if ((dwFlags & ~page->DecodeFlags()) != 0)
        return Fail(ERROR_INVALID_FLAGS);
    const std::size_t length =
        cbMultiByte < 0 ? std::strlen(lpMultiByteStr) + 1 : static_cast<std::size_t>(cbMultiByte);
    WideOutput out(lpWideCharStr, static_cast<std::size_t>(cchWideChar));
    const OnInvalid onInvalid = (dwFlags & MB_ERR_INVALID_CHARS) != 0 ? OnInvalid::Refuse : OnInvalid::Replace;
    const bool valid = page->Decode({lpMultiByteStr, length}, onInvalid, out);
    return Finish(out, valid);
}

int WINAPI WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr, int cchWideChar,
    LPSTR lpMultiByteStr, int cbMultiByte, LPCSTR lpDefaultChar, LPBOOL lpUsedDefaultChar)
{
    using namespace qxplatform;
    if (lpWideCharStr == nullptr || cchWideChar == 0 || cbMultiByte < 0 ||
        (cbMultiByte > 0 && (lpMultiByteStr == nullptr || static_cast<void*>(lpMultiByteStr) == lpWideCharStr)))
        return Fail(ERROR_INVALID_PARAMETER);
    const qxplatform::CodePage* const page = FindCodePage(CodePage);
    if (page == nullptr || (!page->TakesReplacement() && (lpDefaultChar != nullptr || lpUsedDefaultChar != nullptr)))
        return Fail(ERROR_INVALID_PARAMETER);
    if ((dwFlags & ~page->EncodeFlags()) != 0)
        return Fail(ERROR_INVALID_FLAGS);
    const std::size_t length =
        cchWideChar < 0 ? std::wstring_view(lpWideCharStr).size() + 1 : static_cast<std::size_t>(cchWideChar);
    const Encoding encoding{
        .onInvalid = (dwFlags & WC_ERR_INVALID_CHARS) != 0 ? OnInvalid::Refuse : OnInvalid::Replace,
        .bestFit = (dwFlags & WC_NO_BEST_FIT_CHARS) == 0,
        .replacement = Replacement(*page, lpDefaultChar),
    };
    ByteOutput out(lpMultiByteStr, static_cast<std::size_t>(cbMultiByte));
    const EncodeResult result = page->Encode({lpWideCharStr, length}, encoding, out);
    if (lpUsedDefaultChar != nullptr)
        *lpUsedDefaultChar = result.replaced;
    return Finish(out, result.valid);
}
