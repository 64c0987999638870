#include "core/text/string.h"

#include "core/debug_line.h"
#include "core/developer_run.h"
#include "core/text/format_estimate.h"
#include "core/text/text_format.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace qx
{

namespace
{

constexpr std::size_t kFormattedOnStack = 100;
constexpr unsigned short kEnglish = 9;
constexpr unsigned short kGerman = 7;

String ErrorText(unsigned code)
{
    return String::SystemErrorText(code, LANG_USER_DEFAULT);
}

String ModuleFileName(HMODULE module)
{
    wchar_t name[MAX_PATH];
    const DWORD length = GetModuleFileNameW(module, name, MAX_PATH);
    return String(name, 0, length);
}

// Returns an entry of a block of string resources: 16 length-prefixed texts. In a damaged block, entries may be missing
// at the end.
String EntryOfBlock(const WORD* block, std::size_t words, int entry)
{
    for (std::size_t at = 0; at < words; at += 1u + block[at], --entry)
    {
        const std::size_t length = block[at];
        if (length > words - at - 1)
            break;
        if (entry == 0)
        {
            return String(std::wstring_view(reinterpret_cast<const wchar_t*>(block + at + 1), length));
        }
    }
    return String::EmptyString();
}

class StringBlock
{
public:
    // Searches the languages in order, each once, and finally lets the system choose a language.
    StringBlock(HMODULE module, unsigned short language, int id) : _module(module), _name(MAKEINTRESOURCEW(id / 16 + 1))
    {
        const unsigned short languages[] = {language, InterfaceLanguage(),
            static_cast<unsigned short>(LANGIDFROMLCID(GetThreadLocale())),
            static_cast<unsigned short>(PRIMARYLANGID(GetUserDefaultLangID())), kEnglish, kGerman};
        for (const unsigned short* tried = languages; tried != std::end(languages) && !_found; ++tried)
        {
            const bool isRepeated = std::find(+languages, tried, *tried) != tried;
            if (*tried != 0 && !isRepeated)
                _found = FindResourceExW(module, reinterpret_cast<LPCWSTR>(RT_STRING), _name, *tried);
        }
        if (!_found)
            _found = FindResourceW(module, _name, reinterpret_cast<LPCWSTR>(RT_STRING));
    }

    bool IsFound() const { return _found != nullptr; }

    String Entry(int entry) const
    {
        const HGLOBAL loaded = LoadResource(_module, _found);
        const auto* block = loaded ? static_cast<const WORD*>(LockResource(loaded)) : nullptr;
        if (!block)
            return String::EmptyString();
        return EntryOfBlock(block, SizeofResource(_module, _found) / sizeof(WORD), entry);
    }

private:
    HMODULE _module;
    LPCWSTR _name;
    HRSRC _found = nullptr;
};

struct LocalRelease
{
    void operator()(wchar_t* block) const { LocalFree(block); }
};

} // namespace

int String::Format(const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int count = FormatV(format, arguments);
    va_end(arguments);
    return count;
}

int String::FormatV(const wchar_t* format, va_list arguments)
{
    if (!format)
    {
        Empty();
        return 0;
    }
    const std::optional<std::size_t> estimate = EstimateFormat(format, arguments);
    if (!estimate)
    {
        Assign(L"<printf format error>");
        return 0;
    }
    if (*estimate < kFormattedOnStack)
    {
        wchar_t buffer[kFormattedOnStack];
        FormatBounded(buffer, kFormattedOnStack, format, arguments);
        Assign(buffer);
        return 0;
    }
    const auto buffer = std::make_unique_for_overwrite<wchar_t[]>(*estimate + 1);
    const int count = FormatBounded(buffer.get(), *estimate + 1, format, arguments);
    Assign(buffer.get());
    return count < 0 ? -1 : count;
}

String String::SystemErrorText(unsigned code, unsigned short language)
{
    wchar_t buffer[256];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, language,
        buffer, static_cast<DWORD>(std::size(buffer)), nullptr);
    if (length == 0)
        return String(kFormatted, L"(error code %#08lx)", code);
    while (length > 0 && (buffer[length - 1] == L'\r' || buffer[length - 1] == L'\n'))
        --length;
    String text(buffer, 0, length);
    text.Append(String(kFormatted, L" (%08lx)", code));
    return text;
}

String String::VMessage(const wchar_t* format, va_list arguments)
{
    va_list inserts;
    va_copy(inserts, arguments);
    wchar_t* result = nullptr;
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_STRING, format, 0, 0,
        reinterpret_cast<wchar_t*>(&result), 0, &inserts);
    const unsigned error = GetLastError();
    va_end(inserts);
    const std::unique_ptr<wchar_t, LocalRelease> holder(result);
    if (length != 0 && result)
        return String(result);
    String reason = ErrorText(error);
    DebugLine(L"String::VMessage(): FormatMessage() failed: %s", reason.Text());
    return reason;
}

String String::Message(HMODULE module, int id, ...)
{
    String format = LoadResourceString(module, InterfaceLanguage(), id);
    if (format.IsEmpty())
    {
        const unsigned error = GetLastError();
        if (UtilIsDeveloperRun())
            DebugLine(L"String::Message(): String ressource %d not found in %s: '%s'", id,
                ModuleFileName(module).Text(), ErrorText(error).Text());
        return format;
    }
    va_list arguments;
    va_start(arguments, id);
    String text = VMessage(format, arguments);
    va_end(arguments);
    return text;
}

String String::LoadResourceString(HMODULE module, unsigned short language, int id)
{
    const StringBlock block(module, language, id);
    if (block.IsFound())
        return block.Entry(id % 16);
    wchar_t buffer[4096];
    const int length = LoadStringW(module, static_cast<UINT>(id), buffer, static_cast<int>(std::size(buffer)));
    return length > 0 ? String(buffer, 0, static_cast<std::size_t>(length)) : EmptyString();
}

String String::LocaleInfo(unsigned type)
{
    wchar_t buffer[256];
    const int size = GetLocaleInfoW(LOCALE_USER_DEFAULT, type, buffer, static_cast<int>(std::size(buffer)));
    return size > 0 ? String(buffer) : EmptyString();
}

} // namespace qx
