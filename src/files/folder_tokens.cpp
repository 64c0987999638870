#include "files/folder_tokens.h"

#include "core/pattern/regex.h"
#include "core/registry/registry.h"

#include <windows.h>

#include <wchar.h>

namespace qx
{
namespace
{

constexpr wchar_t kShellFolders[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

class clsShellFolderReplace : public IclsRegExGSubCB
{
public:
    String OnMatch(const clsRegExMatchList& matches) override
    {
        for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
        {
            clsRegistryList key(root, kShellFolders, clsRegistryList::kRead);
            String folder;
            if (key.GetString(matches[1].text, folder, L"") == clsRegistryList::kDone)
                return folder;
        }
        return matches[0].text;
    }
};

String ExpandEnvironment(const String& text)
{
    // Another thread may lengthen a variable between two calls, so the call is repeated, but only a few times.
    constexpr int kMaxTries = 4;
    DWORD room = 260;
    for (int tries = 0; tries < kMaxTries; ++tries)
    {
        String expanded;
        const DWORD length = ExpandEnvironmentStringsW(text, expanded.GetBuffer(room), room); // includes the terminator
        if (length == 0)
            break;
        if (length <= room)
        {
            expanded.ReleaseBuffer(length - 1);
            return expanded;
        }
        room = length;
    }
    return text;
}

} // namespace

String ExpandFolderTokens(const String& text)
{
    if (!wcschr(text, L'%'))
        return text;
    clsRegEx token(L"%([A-Z0-9_ ]+)%", 0x40008);
    clsShellFolderReplace replace;
    return token.GSub(ExpandEnvironment(text), replace);
}

} // namespace qx
