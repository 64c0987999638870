#include "files/path.h"

#include "base/fail.h"
#include "base/home.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

constexpr char16_t kBackslashInName = 0xF05C;

enum class RootKind
{
    FileSystem,
    Drive,
    Share,
    Unusable
};

// The start of a path.
struct Root
{
    RootKind kind = RootKind::FileSystem;
    bool isAbsolute = false;
    std::u16string_view name; // the drive's letter or the server's name
    std::u16string_view share;
};

bool StartsWith(std::u16string_view text, std::u16string_view prefix)
{
    return text.substr(0, prefix.size()) == prefix;
}

std::u16string_view TakeComponent(std::u16string_view& rest)
{
    const std::size_t end = std::min(rest.find_first_of(u"/\\"), rest.size());
    const std::u16string_view component = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return component;
}

std::string LowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 0x20) : c; });
    return text;
}

std::string DeviceFolder(const std::string& name)
{
    return HomeFolder() + "/dosdevices/" + name;
}

// Returns the folder of a share. Its name is case-insensitive: the link may have the name as written by the caller, or
// else in lower case.
std::string ShareFolder(std::u16string_view server, std::u16string_view share)
{
    const std::string name = "unc/" + ToBytes(server) + '/' + ToBytes(share);
    const std::string folder = DeviceFolder(name);
    return access(folder.c_str(), F_OK) == 0 ? folder : DeviceFolder(LowerCase(name));
}

bool HasDrive(std::u16string_view path)
{
    const auto isLetter = [](char16_t c)
    {
        return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
    };
    return path.size() >= 2 && path[1] == u':' && isLetter(path[0]);
}

bool IsDots(std::u16string_view component)
{
    return component == u"." || component == u"..";
}

// Removes the server and the share from the path; the share may be missing. Dots in place of either name would lead out
// of the folder of shares and are refused.
Root TakeShare(std::u16string_view& path)
{
    const std::u16string_view server = TakeComponent(path);
    while (!path.empty() && IsSeparator(path[0]))
        path.remove_prefix(1);
    const std::u16string_view share = TakeComponent(path);
    const bool isUsable = !server.empty() && !IsDots(server) && !IsDots(share);
    return {isUsable ? RootKind::Share : RootKind::Unusable, true, server, share};
}

// Removes the root from the path.
Root TakeRoot(std::u16string_view& path)
{
    constexpr std::u16string_view kVerbatimShare = uR"(\\?\UNC\)";
    constexpr std::u16string_view kVerbatim = uR"(\\?\)";
    constexpr std::u16string_view kDevice = uR"(\\.\)";
    constexpr std::u16string_view kShare = uR"(\\)";
    if (path.empty() || StartsWith(path, kDevice))
        return {RootKind::Unusable};
    const auto take = [&path](std::u16string_view prefix)
    {
        const bool isThere = StartsWith(path, prefix);
        path.remove_prefix(isThere ? prefix.size() : 0);
        return isThere;
    };
    const bool isVerbatim = StartsWith(path, kVerbatim);
    if (take(kVerbatimShare) || (!isVerbatim && take(kShare)))
        return TakeShare(path);
    take(kVerbatim);
    const std::u16string_view letter = path.substr(0, 1);
    const bool hasDrive = HasDrive(path);
    if (hasDrive)
        path.remove_prefix(2);
    // Z: is the whole file system, so Z:name is in the current folder. Other drives have no current folder.
    if (hasDrive && letter != u"z" && letter != u"Z")
        return {RootKind::Drive, true, letter};
    return {RootKind::FileSystem, !path.empty() && IsSeparator(path[0])};
}

// Returns the Linux folder of a drive or share, or an empty text for the file system's own root.
std::string FolderOfRoot(const Root& root)
{
    if (root.kind == RootKind::Share)
        return ShareFolder(root.name, root.share);
    if (root.kind == RootKind::Drive)
        return DeviceFolder(LowerCase(ToBytes(root.name)) + ':');
    return {};
}

// Returns the components with "." and ".." resolved. The root has no parent; a relative path may begin with "..".
std::vector<std::u16string_view> Components(std::u16string_view path, bool isAbsolute)
{
    std::vector<std::u16string_view> components;
    while (!path.empty())
    {
        const std::u16string_view component = TakeComponent(path);
        if (component.empty() || component == u".")
            continue;
        if (component != u"..")
            components.push_back(component);
        else if (!components.empty() && components.back() != u"..")
            components.pop_back();
        else if (!isAbsolute)
            components.push_back(component);
    }
    return components;
}

std::string CurrentFolder()
{
    std::string folder(PATH_MAX, '\0');
    const char* const result = getcwd(folder.data(), folder.size());
    return result == nullptr ? "/" : result;
}

NativePath Convert(std::u16string_view path)
{
    NativePath native;
    native.endsInSeparator = !path.empty() && IsSeparator(path.back());
    const Root root = TakeRoot(path);
    if (root.kind == RootKind::Unusable)
        return {};
    native.text = FolderOfRoot(root);
    for (const std::u16string_view component : Components(path, root.isAbsolute))
    {
        if (root.isAbsolute || !native.text.empty())
            native.text += '/';
        native.text += NativeName(component);
    }
    if (native.text.empty())
        native.text = root.isAbsolute ? "/" : ".";
    return native;
}

// Returns the path below a drive or share in the caller's form. Without components, returns the root folder of a drive.
std::u16string FormBelow(const Root& root, std::u16string_view path, bool endsInSeparator)
{
    const bool isDrive = root.kind == RootKind::Drive;
    std::u16string form = isDrive ? std::u16string(root.name) + u':' : u"\\\\" + std::u16string(root.name);
    if (!root.share.empty())
        (form += u'\\') += root.share;
    const std::vector<std::u16string_view> components = Components(path, true);
    for (const std::u16string_view component : components)
        (form += u'\\') += component;
    if (endsInSeparator || (isDrive && components.empty()))
        form += u'\\';
    return form;
}

bool IsFolder(const std::string& path)
{
    struct stat info
    {
    };
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace

NativePath ToNative(LPCWSTR path)
{
    NativePath native = path == nullptr ? NativePath() : Convert(View(path));
    if (native.IsEmpty())
        Fail(ERROR_PATH_NOT_FOUND);
    return native;
}

NativePath ToFullNative(LPCWSTR path)
{
    NativePath native = ToNative(path);
    if (native.IsEmpty() || native.text[0] == '/')
        return native;
    const std::u16string full = FromNative(CurrentFolder()) + u'/' + FromNative(native.text);
    const bool endsInSeparator = native.endsInSeparator;
    native = Convert(full);
    native.endsInSeparator = endsInSeparator;
    return native;
}

std::u16string CallersForm(LPCWSTR path, bool isFull)
{
    std::u16string_view rest = path == nullptr ? std::u16string_view() : View(path);
    const bool endsInSeparator = !rest.empty() && IsSeparator(rest.back());
    const Root root = TakeRoot(rest);
    if (root.kind == RootKind::Drive || root.kind == RootKind::Share)
        return FormBelow(root, rest, endsInSeparator);
    const NativePath native = isFull ? ToFullNative(path) : ToNative(path);
    return native.IsEmpty() ? std::u16string() : FromNative(native);
}

std::string NativeName(std::u16string_view component)
{
    std::u16string name(component);
    std::replace(name.begin(), name.end(), kBackslashInName, u'\\');
    return ToBytes(name);
}

std::u16string FromNative(std::string_view path)
{
    std::u16string text = ToWide(path);
    std::replace(text.begin(), text.end(), u'\\', kBackslashInName);
    return text;
}

std::u16string FromNative(const NativePath& path)
{
    std::u16string text = FromNative(path.text);
    if (path.endsInSeparator && text.back() != u'/')
        text += u'/';
    return text;
}

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == path.npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string_view NameOf(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

DWORD PathError(int code, const std::string& path)
{
    if (code == ENOENT && !IsFolder(FolderOf(path)))
        return ERROR_PATH_NOT_FOUND;
    return ErrorFromErrno(code);
}

} // namespace qxplatform
