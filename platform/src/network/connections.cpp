#include "network/connections.h"

#include "base/home.h"
#include "base/text.h"

#include <climits>
#include <cstring>
#include <string_view>

#include <unistd.h>

namespace qxplatform
{
namespace
{

// Returns an empty text if the file isn't a link, or if its target is too long for a path.
std::string TargetOfLink(const std::string& path)
{
    char target[PATH_MAX];
    const ssize_t length = readlink(path.c_str(), target, sizeof target);
    return length < 0 || length == sizeof target ? std::string()
                                                 : std::string(target, static_cast<std::size_t>(length));
}

// Returns false for a text that can't be a name in \\server\share; a backslash in it would look like a separator.
bool IsName(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." && name.find_first_of("/\\") == name.npos;
}

// Returns \\server\share for the target `unc/server/share`, and an empty text for all others.
std::u16string ShareOfTarget(std::string_view target)
{
    constexpr std::string_view kShares = "unc/";
    if (target.substr(0, kShares.size()) != kShares)
        return {};
    target.remove_prefix(kShares.size());
    if (target.ends_with('/'))
        target.remove_suffix(1);
    const std::size_t slash = target.find('/');
    if (slash == target.npos || !IsName(target.substr(0, slash)) || !IsName(target.substr(slash + 1)))
        return {};
    return u"\\\\" + ToWide(target.substr(0, slash)) + u'\\' + ToWide(target.substr(slash + 1));
}

} // namespace

std::optional<Connection> ConnectionOf(char16_t letter)
{
    const char lowerCase = static_cast<char>(letter | 0x20);
    const std::string home = HomeFolder();
    if (letter > u'z' || lowerCase < 'a' || lowerCase >= 'z' || home.empty())
        return {};
    const std::u16string share = ShareOfTarget(TargetOfLink(home + "/dosdevices/" + lowerCase + ':'));
    if (share.empty())
        return {};
    return Connection{{static_cast<char16_t>(letter & ~0x20), u':'}, share};
}

std::vector<Connection> Connections()
{
    std::vector<Connection> connections;
    for (char16_t letter = u'A'; letter < u'Z'; ++letter)
        if (std::optional<Connection> connection = ConnectionOf(letter))
            connections.push_back(std::move(*connection));
    return connections;
}

LPWSTR PutText(BYTE*& target, const std::u16string& text)
{
    BYTE* const start = target;
    std::memcpy(start, text.c_str(), SizeOfText(text));
    target += SizeOfText(text);
    return reinterpret_cast<LPWSTR>(start);
}

} // namespace qxplatform
