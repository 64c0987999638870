#include "accounts/file_users.h"

#include "accounts/connection_list.h"
#include "core/debug_line.h"
#include "core/forever.h"
#include "core/pattern/regex.h"

#include <lmerr.h>

#include <cstddef>
#include <iterator>
#include <memory>

namespace qx
{
namespace
{

// More open files than any server has. Without a limit, a server that never ends its list would block the caller
// forever.
constexpr std::size_t kMostFiles = 10'000'000;
constexpr DWORD kAccessBits = PERM_FILE_READ | PERM_FILE_WRITE | PERM_FILE_CREATE;

// Returns the path unchanged if the file doesn't exist, or if its long form is too long.
String LongForm(const String& path)
{
    wchar_t longForm[MAX_PATH];
    const DWORD length = GetLongPathNameW(path, longForm, static_cast<DWORD>(std::size(longForm)));
    return length != 0 && length < std::size(longForm) ? String(longForm) : path;
}

// Replaces a drive that is connected with a share by the share. Returns false if the connections can't be listed.
bool ReplaceDrive(String& path)
{
    static clsRegEx& pattern = MakeForever<clsRegEx>(L"(?i)^([A-Z]:)", 0U);
    clsRegExMatchList groups;
    if (!pattern.Match(path, &groups))
        return true;
    ConnectionList connections;
    if (!connections.IsOpen())
    {
        DebugLine(L"UtilGetFileAccess(): WNetOpenEnum() failed");
        return false;
    }
    if (!connections.ReadFirst())
    {
        DebugLine(L"UtilGetFileAccess(): WNetEnumResource() failed");
        return false;
    }
    const IString drive = groups[1].text;
    RememberedConnection found;
    if (connections.Find([&drive](const RememberedConnection& one) { return one.drive == drive; }, found))
        path = String(found.share, path.Mid(drive.Length()));
    return true;
}

// Collects the users of one file from the blocks of a server's list.
class Collector
{
public:
    Collector(const String& pathOnServer, FileUsers& found) : _path(pathOnServer), _found(found) {}

    void Add(const FILE_INFO_3& file)
    {
        static clsRegEx& pattern = MakeForever<clsRegEx>(L"(?i)^([A-Z]:)(\\\\.*)$", 0U);
        clsRegExMatchList groups;
        if (!file.fi3_pathname || !pattern.Match(file.fi3_pathname, &groups) || _path != groups[2].text)
            return;
        _found.access |= file.fi3_permissions & kAccessBits;
        if (!file.fi3_username)
            return;
        // Checks `_hasUsers` rather than the text, because the first name may be empty.
        if (_hasUsers)
            _found.users.Append(L'\t');
        _found.users.Append(file.fi3_username);
        _hasUsers = true;
    }

private:
    const String _path;
    FileUsers& _found;
    bool _hasUsers = false;
};

struct BlockRelease
{
    void operator()(BYTE* block) const { network.p_NetApiBufferFree(block); }

    clsNetAPI32& network;
};

// Returns false if the server's list can't be read to its end.
bool ListFiles(const String& server, clsNetAPI32& network, Collector& collector)
{
    if (!network.p_NetFileEnum.IsThere() || !network.p_NetApiBufferFree.IsThere())
        return false;
    ULONG_PTR resume = 0;
    NET_API_STATUS status = ERROR_MORE_DATA;
    std::size_t listed = 0;
    while (status == ERROR_MORE_DATA)
    {
        BYTE* block = nullptr;
        DWORD read = 0;
        DWORD total = 0;
        status =
            network.p_NetFileEnum(server, nullptr, nullptr, 3, &block, MAX_PREFERRED_LENGTH, &read, &total, &resume);
        const std::unique_ptr<BYTE, BlockRelease> owner(block, BlockRelease{network});
        const bool hasBlock = (status == NERR_Success || status == ERROR_MORE_DATA) && block != nullptr;
        for (DWORD i = 0; hasBlock && i < read; ++i)
            collector.Add(reinterpret_cast<const FILE_INFO_3*>(block)[i]);
        listed += read;
        // A server that always reports more files but returns none would block the caller forever too.
        if (status == ERROR_MORE_DATA && (!hasBlock || read == 0 || listed > kMostFiles))
            return false;
    }
    return status == NERR_Success;
}

} // namespace

FileUsersResult GetFileInfoAccess(const String& path, clsNetAPI32& network, FileUsers& found)
{
    static clsRegEx& pattern = MakeForever<clsRegEx>(L"(?i)^(\\\\\\\\.*?)(\\\\.*)$", 0U);
    String target = LongForm(path);
    if (!ReplaceDrive(target))
        return FileUsersResult::NoConnections;
    clsRegExMatchList groups;
    if (!pattern.Match(target, &groups))
        return FileUsersResult::Done;
    Collector collector(groups[2].text, found);
    if (ListFiles(groups[1].text, network, collector))
        return FileUsersResult::Done;
    found.access = 0;
    return FileUsersResult::NoAnswer;
}

} // namespace qx
