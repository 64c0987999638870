#include "docinfo/shortcut.h"

#include "docinfo/com_guard.h"
#include "files/auto_release.h"

#include <shlguid.h>
#include <shobjidl.h>

namespace qx
{

String TargetOfShortcut(const String& path)
{
    constexpr DWORD kNoDialogAnyMatch = DWORD{SLR_NO_UI} | DWORD{SLR_ANY_MATCH};
    // A failure doesn't matter: a thread that has already entered COM in another mode can use it, too.
    const clsCOMInitialize com;
    clsAutoRelease<IShellLinkW*> link;
    clsAutoRelease<IPersistFile*> file;
    wchar_t target[MAX_PATH] = {};
    if (FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
            reinterpret_cast<void**>(link.Receive()))) ||
        FAILED(link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(file.Receive()))) ||
        FAILED(file->Load(path.Text(), STGM_SHARE_DENY_WRITE)) || FAILED(link->Resolve(nullptr, kNoDialogAnyMatch)) ||
        FAILED(link->GetPath(target, MAX_PATH, nullptr, SLGP_UNCPRIORITY)))
        return String();
    return String(target);
}

} // namespace qx
