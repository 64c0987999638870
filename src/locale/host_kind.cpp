#include "locale/host_kind.h"

#include "core/text/string.h"
#include "module/module_paths.h"
#include "module/version_block.h"

#include <windows.h>

namespace qx
{

HostKind HostKindByName(const wchar_t* internalName)
{
    const IString name(internalName);
    return name == L"vtz" ? HostKind::Vtz : name == L"hqd" ? HostKind::Hqd : HostKind::Other;
}

HostKind ThisHostKind()
{
    static const HostKind kind =
        HostKindByName(GetFileVersionValue(ModulePath(GetModuleHandleW(nullptr)), L"InternalName"));
    return kind;
}

} // namespace qx
