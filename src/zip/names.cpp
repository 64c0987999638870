#include "zip/names.h"

#include "core/forever.h"
#include "core/pattern/regex.h"
#include "zip/records.h"

#include <windows.h>

namespace qx
{
namespace
{

constexpr wchar_t kDrivePattern[] = L"(?i)^([A-Z]:)(.*)$";
constexpr wchar_t kServerPattern[] = L"(?i)^(\\\\\\\\.*?)(\\\\.*)$";

// Returns the name without a drive or server.
String WithoutRoot(const String& name)
{
    static clsRegEx& drive = MakeForever<clsRegEx>(kDrivePattern, 0u);
    static clsRegEx& server = MakeForever<clsRegEx>(kServerPattern, 0u);
    clsRegExMatchList matches;
    if (drive.Match(name, &matches) || server.Match(name, &matches))
        return matches.Count() > 2 ? matches[2].text : String();
    return name;
}

// Converts a text. Look-alike replacements count as missing characters, because converting a name back must restore it.
int Convert(const String& text, unsigned codePage, char* bytes, int room, BOOL* usedDefault)
{
    const DWORD flags = codePage == kZipUtf8CodePage ? 0 : WC_NO_BEST_FIT_CHARS;
    return WideCharToMultiByte(
        codePage, flags, text, static_cast<int>(text.Length()), bytes, room, nullptr, usedDefault);
}

} // namespace

String StoredNameOf(const String& path, const String& given)
{
    String name = WithoutRoot(given.IsEmpty() ? path : given);
    name.Replace(L'\\', L'/');
    return name;
}

bool IsOemText(const String& text)
{
    BOOL usedDefault = FALSE;
    return text.IsEmpty() || (Convert(text, kZipOemCodePage, nullptr, 0, &usedDefault) > 0 && !usedDefault);
}

std::string EncodedText(const String& text, unsigned codePage)
{
    std::string bytes;
    const int count = text.IsEmpty() ? 0 : Convert(text, codePage, nullptr, 0, nullptr);
    if (count > 0)
    {
        bytes.resize(static_cast<std::size_t>(count));
        Convert(text, codePage, bytes.data(), count, nullptr);
    }
    return bytes;
}

} // namespace qx
