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

// The start of a path, and the rest of it.
struct Root
{
    std::string folder; // empty for the root of the file system
    bool isAbsolute = false;
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

// Server and share names are case-insensitive: a link may have the name as the caller writes it, or else in lower case.
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

Root TakeRoot(std::u16string_view& path)
{
    bool isShare = false;
    if (StartsWith(path, uR"(\\?\UNC\)"))
    {
        path.remove_prefix(8);
        isShare = true;
    }
    else if (StartsWith(path, uR"(\\?\)"))
        path.remove_prefix(4);
    else if (StartsWith(path, uR"(\\)"))
    {
        path.remove_prefix(2);
        isShare = true;
    }
    if (isShare)
    {
        const std::u16string_view server = TakeComponent(path);
        return {ShareFolder(server, TakeComponent(path)), true};
    }
    if (!HasDrive(path))
        return {"", !path.empty() && IsSeparator(path[0])};
    const char16_t letter = path[0] | 0x20;
    path.remove_prefix(2);
    // Z: is the whole file system, so Z:name is in the current folder. Other drives have no current folder.
    if (letter == u'z')
        return {"", !path.empty() && IsSeparator(path[0])};
    return {DeviceFolder({static_cast<char>(letter), ':'}), true};
}

std::string NativeComponent(std::u16string_view component)
{
    std::u16string name(component);
    std::replace(name.begin(), name.end(), kBackslashInName, u'\\');
    return ToBytes(name);
}

// Returns the components with "." and ".." resolved. The root has no parent; a relative path may begin with "..".
std::vector<std::string> Components(std::u16string_view path, bool isAbsolute)
{
    std::vector<std::string> components;
    while (!path.empty())
    {
        const std::u16string_view component = TakeComponent(path);
        if (component.empty() || component == u".")
            continue;
        if (component != u"..")
            components.push_back(NativeComponent(component));
        else if (!components.empty() && components.back() != "..")
            components.pop_back();
        else if (!isAbsolute)
            components.push_back("..");
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
    if (path.empty() || StartsWith(path, uR"(\\.\)"))
        return {};
    NativePath native;
    const Root root = TakeRoot(path);
    native.text = root.folder;
    native.endsInSeparator = !path.empty() && IsSeparator(path.back());
    for (const std::string& component : Components(path, root.isAbsolute))
    {
        if (root.isAbsolute || !native.text.empty())
            native.text += '/';
        native.text += component;
    }
    if (native.text.empty())
        native.text = root.isAbsolute ? "/" : ".";
    return native;
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

std::u16string FromNative(std::string_view path)
{
    std::u16string text = ToWide(path);
    std::replace(text.begin(), text.end(), u'\\', kBackslashInName);
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
