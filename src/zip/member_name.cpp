#include "zip/member_name.h"

#include "core/system_values.h"
#include "files/name_check.h"
#include "files/path_separator.h"
#include "zip/names.h"
#include "zip/records.h"

#include <windows.h>

#include <zlib.h>

#include <algorithm>

namespace qx
{
namespace
{

constexpr std::uint16_t kUnicodePathId = 0x7075;
constexpr std::size_t kUnicodePathHead = 5; // version 1 (1 byte), CRC-32 of the replaced name (4 bytes)

constexpr unsigned kMadeOnUnix = 3;
constexpr unsigned kMadeOnDarwin = 19;

std::uint32_t Number(std::string_view bytes, std::size_t offset, std::size_t width)
{
    std::uint32_t number = 0;
    for (std::size_t i = width; i > 0; --i)
        number = number << 8 | static_cast<unsigned char>(bytes[offset + i - 1]);
    return number;
}

bool IsAscii(std::string_view bytes)
{
    for (const char c : bytes)
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
    return true;
}

bool IsUtf8(std::string_view bytes)
{
    return MultiByteToWideChar(
               kZipUtf8CodePage, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0) > 0;
}

String Decoded(std::string_view bytes, unsigned codePage)
{
    String text;
    text.SetCodePage(codePage);
    text.Assign(bytes.data(), 0, bytes.size());
    text.SetCodePage(DefaultCodePage());
    return text;
}

// Returns an empty text if the field is missing, or if it is stale because the name was changed later.
std::string_view UnicodePath(std::string_view name, std::string_view extra)
{
    const std::string_view field = FindExtraField(extra, kUnicodePathId);
    if (field.size() <= kUnicodePathHead || field[0] != 1)
        return {};
    const auto crc = crc32(0, reinterpret_cast<const Bytef*>(name.data()), static_cast<uInt>(name.size()));
    return Number(field, 1, 4) == crc ? field.substr(kUnicodePathHead) : std::string_view();
}

constexpr std::size_t kLongestPosixName = 255; // bytes

// Returns true if the rules of Windows allow the name. Colons aren't allowed: they name a drive or an alternate stream.
bool IsAllowedOnWindows(const String& part)
{
    return part.View().find(L':') == std::wstring_view::npos && !IsDeviceName(part) && IsFileNameAllowed(part);
}

bool IsPartAllowed(const String& part)
{
    if (part.View().find(L'\0') != std::wstring_view::npos)
        return false;
    return kHasPosixFiles ? EncodedText(part, kZipUtf8CodePage).size() <= kLongestPosixName : IsAllowedOnWindows(part);
}

bool HasDrive(const String& name)
{
    const wchar_t letter = name.CharAt(0) | 0x20;
    return letter >= L'a' && letter <= L'z' && name.CharAt(1) == L':';
}

// Returns true for an absolute name or a name with a drive. On systems that allow colons in names, "c:" is a drive only
// if a separator follows, and never in a name from POSIX.
bool LeadsOut(const String& name, bool isFromPosix)
{
    if (!kHasPosixFiles)
        return IsPathSeparator(name.CharAt(0)) || HasDrive(name);
    if (isFromPosix)
        return name.CharAt(0) == L'/';
    return IsPathSeparator(name.CharAt(0)) || (HasDrive(name) && IsPathSeparator(name.CharAt(2)));
}

} // namespace

std::string_view FindExtraField(std::string_view extra, std::uint16_t id)
{
    constexpr std::size_t kHead = 4; // id and size
    while (extra.size() >= kHead)
    {
        const std::size_t size = Number(extra, 2, 2);
        if (size > extra.size() - kHead)
            break;
        if (Number(extra, 0, 2) == id)
            return extra.substr(kHead, size);
        extra.remove_prefix(kHead + size);
    }
    return {};
}

String MemberName(std::string_view name, std::uint16_t flags, std::uint16_t versionMadeBy, std::string_view extra)
{
    if (flags & kZipFlagUtf8)
        return Decoded(name, kZipUtf8CodePage);
    const std::string_view path = UnicodePath(name, extra);
    if (!path.empty())
        return Decoded(path, kZipUtf8CodePage);
    return Decoded(
        name, IsMadeOnPosix(versionMadeBy) && !IsAscii(name) && IsUtf8(name) ? kZipUtf8CodePage : kZipOemCodePage);
}

bool IsMadeOnPosix(std::uint16_t versionMadeBy)
{
    const unsigned system = versionMadeBy >> 8;
    return system == kMadeOnUnix || system == kMadeOnDarwin;
}

MemberPathError SplitMemberName(const String& name, bool isFromPosix, WCValSList<String>& parts)
{
    if (LeadsOut(name, isFromPosix))
        return MemberPathError::LeadsOut;
    const bool keepsBackslash = kHasPosixFiles && isFromPosix;
    std::wstring_view rest = name.View();
    while (!rest.empty())
    {
        const std::size_t end = std::min(rest.find_first_of(keepsBackslash ? L"/" : L"\\/"), rest.size());
        String part(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (part.View() == L"..")
            return MemberPathError::LeadsOut;
        if (part.IsEmpty() || part.View() == L".")
            continue;
        if (!IsPartAllowed(part))
            return MemberPathError::NotAllowed;
        if (keepsBackslash)
            part.Replace(L'\\', kBackslashInName);
        parts.Append(part);
    }
    return MemberPathError::None;
}

} // namespace qx
