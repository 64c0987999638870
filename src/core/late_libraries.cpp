#include "core/late_libraries.h"

namespace qx
{

clsKernel32& Kernel32()
{
    static clsKernel32 library;
    return library;
}

clsAdvAPI32& AdvAPI32()
{
    static clsAdvAPI32 library;
    return library;
}

clsNTdll& NTdll()
{
    static clsNTdll library;
    return library;
}

clsPSAPI& PSAPI()
{
    static clsPSAPI library;
    return library;
}

clsShell32& Shell32()
{
    static clsShell32 library;
    return library;
}

clsShlwapi& Shlwapi()
{
    static clsShlwapi library;
    return library;
}

clsNetAPI32& NetAPI32()
{
    static clsNetAPI32 library;
    return library;
}

clsCredUIWrapper& CredUI()
{
    static clsCredUIWrapper library;
    return library;
}

} // namespace qx
