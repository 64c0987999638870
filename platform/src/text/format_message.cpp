// FormatMessageW: the sources of the text and the output buffers.

#include <winbase.h>
#include <winnls.h>
#include <winnt.h>

#include <algorithm>
#include <string>

#include "base/fail.h"
#include "base/text.h"
#include "text/message_text.h"
#include "text/system_messages.h"

using namespace qxplatform;

namespace
{

DWORD Failed(DWORD error)
{
    return static_cast<DWORD>(Fail(error));
}

// Returns true for English and for the default languages: the system messages exist only in English.
bool IsLanguageOfSystemMessages(DWORD language)
{
    const WORD primary = PRIMARYLANGID(language);
    return primary == LANG_NEUTRAL || primary == LANG_ENGLISH;
}

DWORD FindSystemMessage(DWORD code, DWORD language, std::u16string& text)
{
    const std::string_view found = SystemMessage(code);
    if (found.empty())
        return ERROR_MR_MID_NOT_FOUND;
    if (!IsLanguageOfSystemMessages(language))
        return ERROR_RESOURCE_LANG_NOT_FOUND;
    text.assign(found.begin(), found.end());
    text += u"\r\n";
    return ERROR_SUCCESS;
}

DWORD FindMessage(DWORD flags, LPCVOID source, DWORD code, DWORD language, std::u16string& text)
{
    if ((flags & FORMAT_MESSAGE_FROM_STRING) != 0)
    {
        if (source == nullptr)
            return ERROR_INVALID_PARAMETER;
        text = View(static_cast<LPCWSTR>(source));
        return ERROR_SUCCESS;
    }
    if ((flags & FORMAT_MESSAGE_FROM_SYSTEM) != 0)
        return FindSystemMessage(code, language, text);
    return ERROR_INVALID_PARAMETER;
}

// Stores the text in a new buffer, which the caller frees with LocalFree.
DWORD GiveAllocated(const std::u16string& text, LPWSTR* target, DWORD minimum)
{
    const std::size_t size = std::max<std::size_t>(text.size() + 1, minimum);
    const auto buffer = static_cast<LPWSTR>(LocalAlloc(LPTR, size * sizeof(wchar_t)));
    if (buffer == nullptr)
        return Failed(ERROR_NOT_ENOUGH_MEMORY);
    std::copy(text.begin(), text.end(), buffer);
    *target = buffer;
    return static_cast<DWORD>(text.size());
}

DWORD GiveInto(const std::u16string& text, LPWSTR buffer, DWORD size)
{
    if (text.size() >= size)
        return Failed(ERROR_INSUFFICIENT_BUFFER);
    *std::copy(text.begin(), text.end(), buffer) = 0;
    return static_cast<DWORD>(text.size());
}

} // namespace

DWORD WINAPI FormatMessageW(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId, LPWSTR lpBuffer,
    DWORD nSize, va_list* Arguments)
{
    const bool allocates = (dwFlags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0;
    if (lpBuffer == nullptr)
        return Failed(ERROR_INVALID_PARAMETER);
    const auto allocated = reinterpret_cast<LPWSTR*>(lpBuffer);
    if (allocates)
        *allocated = nullptr;

    std::u16string text;
    if (const DWORD error = FindMessage(dwFlags, lpSource, dwMessageId, dwLanguageId, text); error != ERROR_SUCCESS)
        return Failed(error);

    MessageArguments arguments(Arguments);
    const bool withInserts = (dwFlags & FORMAT_MESSAGE_IGNORE_INSERTS) == 0;
    std::u16string expanded;
    if (const DWORD error = ExpandMessage(text, withInserts, arguments, expanded); error != ERROR_SUCCESS)
        return Failed(error);
    if (expanded.empty())
    {
        if (!allocates && nSize > 0)
            *lpBuffer = 0;
        return Failed(ERROR_NO_WORK_DONE);
    }
    return allocates ? GiveAllocated(expanded, allocated, nSize) : GiveInto(expanded, lpBuffer, nSize);
}
