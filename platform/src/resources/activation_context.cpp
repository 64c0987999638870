#include <handleapi.h>
#include <libloaderapi.h>
#include <winbase.h>
#include <winuser.h>

#include "base/handle_table.h"

using namespace qxplatform;

namespace
{

// The context of a manifest. No library exists in several versions, so the context contains no data.
class ActivationContext : public Object
{
public:
    ActivationContext() : Object(ObjectType::ActivationContext) {}
};

constexpr DWORD kByResource = ACTCTX_FLAG_RESOURCE_NAME_VALID | ACTCTX_FLAG_HMODULE_VALID;

} // namespace

HANDLE WINAPI CreateActCtxW(const ACTCTXW* pActCtx)
{
    HANDLE handle = nullptr;
    if (pActCtx == nullptr || pActCtx->cbSize != sizeof *pActCtx)
        Fail(ERROR_INVALID_PARAMETER);
    else if (pActCtx->dwFlags != kByResource)
        Fail(ERROR_NOT_SUPPORTED);
    else if (FindResourceW(pActCtx->hModule, pActCtx->lpResourceName, RT_MANIFEST) != nullptr)
        handle = AddHandle(MakeObject<ActivationContext>());
    return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}

void WINAPI ReleaseActCtx(HANDLE hActCtx)
{
    CloseEntry(hActCtx, [](const Object& object) { return object.type == ObjectType::ActivationContext; });
}
