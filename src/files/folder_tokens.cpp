#include "files/folder_tokens.h"

#include "core/regex.h"
#include "core/registry.h"

#include <windows.h>

#include <wchar.h>

namespace qx
{
namespace
{

constexpr wchar_t shellFolders[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

class clsShellFolderReplace : public IclsRegExGSubCB
{
public:
    String OnMatch(const clsRegExMatchList& matches) override
    {
        for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
        {
            clsRegistryList key(root, shellFolders, clsRegistryList::Read);
            String folder;
            if (key.GetString(matches[1].text, folder, L"") == clsRegistryList::Done)
                return folder;
        }
        return matches[0].text;
    }
};

String ExpandEnvironment(const String& text)
{
    constexpr DWORD usualLength = 260;
    String expanded;
    DWORD length = ExpandEnvironmentStringsW(text, expanded.GetBuffer(usualLength), usualLength);
    // Another thread may make a variable longer meanwhile; then what fits is taken.
    if (length >= usualLength)
        length = ExpandEnvironmentStringsW(text, expanded.GetBuffer(length), length);
    expanded.ReleaseBuffer();
    return length == 0 ? text : expanded;
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
