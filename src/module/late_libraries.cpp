#include "module/late_libraries.h"

namespace qx
{
namespace
{

// Returns the single object for a library. It is static inside a function, so that it is constructed even if another
// static object uses it first.
template <class Library>
Library& TheOne()
{
    static Library library;
    return library;
}

} // namespace

bool clsTrlmCTL::Load()
{
    clsCriticalSectionLock lock(_lock);
    if (_module)
        return true;
    if (!CSiblingLibrary::Load())
        return false;
    const bool canOpen = p_CtlJobOpenEx.IsThere();
    SetSiblingVersion(FoundVersion());
    if (canOpen && !WasPresent())
    {
        _job = p_CtlJobOpenEx();
        _hasJob = true;
    }
    return true;
}

clsTrlmCTL::~clsTrlmCTL()
{
    if (_hasJob && p_CtlJobCloseEx.IsThere())
        p_CtlJobCloseEx(_job);
}

clsCTL::clsCTL(HMODULE module) : CLateLoadBase(L"unknown")
{
    SetFreeOnDestruction(false);
    _module = module;
}

bool clsCTL::Load()
{
    return _module != nullptr;
}

clsKernel32& Kernel32()
{
    return TheOne<clsKernel32>();
}

clsAdvAPI32& AdvAPI32()
{
    return TheOne<clsAdvAPI32>();
}

clsNTdll& NTdll()
{
    return TheOne<clsNTdll>();
}

clsPSAPI& PSAPI()
{
    return TheOne<clsPSAPI>();
}

clsTlHelp32& TlHelp32()
{
    return TheOne<clsTlHelp32>();
}

clsShell32& Shell32()
{
    return TheOne<clsShell32>();
}

clsShlwapi& Shlwapi()
{
    return TheOne<clsShlwapi>();
}

clsNetAPI32& NetAPI32()
{
    return TheOne<clsNetAPI32>();
}

clsXMLLite& XMLLite()
{
    return TheOne<clsXMLLite>();
}

clsCredUIWrapper& CredUI()
{
    return TheOne<clsCredUIWrapper>();
}

clsTrlmUTIL& TrlmUTIL()
{
    return TheOne<clsTrlmUTIL>();
}

clsTrlmCTL& TrlmCTL()
{
    return TheOne<clsTrlmCTL>();
}

clsGDI32& GDI32()
{
    return TheOne<clsGDI32>();
}

clsUXTheme& UXTheme()
{
    return TheOne<clsUXTheme>();
}

clsShCore& ShCore()
{
    return TheOne<clsShCore>();
}

clsUser32& User32()
{
    return TheOne<clsUser32>();
}

clsComCtl32& ComCtl32()
{
    return TheOne<clsComCtl32>();
}

clsComDlg32& ComDlg32()
{
    return TheOne<clsComDlg32>();
}

clsDWMAPI& DWMAPI()
{
    return TheOne<clsDWMAPI>();
}

clsWINSPOOL& WINSPOOL()
{
    return TheOne<clsWINSPOOL>();
}

clsIEFrame& IEFrame()
{
    return TheOne<clsIEFrame>();
}

} // namespace qx
