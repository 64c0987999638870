#include "module/module_frame.h"

#include "core/debug_line.h"
#include "core/debugger.h"
#include "core/system_values.h"
#include "core/ticks.h"
#include "module/late_libraries.h"
#include "module/module_paths.h"
#include "module/system_facts.h"

#include <windows.h>

#include <stdlib.h>
#include <wchar.h>

#include <atomic>
#include <cstdint>

namespace qx
{
namespace
{

// The resource number of the library's application manifest.
constexpr WORD kManifestResource = 2;

std::atomic<HANDLE> activationContext = INVALID_HANDLE_VALUE;
std::atomic<_invalid_parameter_handler> formerHandler = nullptr;

// Runs a step and catches all exceptions, because a failing step must not keep the process from loading the library.
template <class Work>
void Step(Work work) noexcept
{
    try
    {
        work();
    }
    catch (...)
    {
        OutputDebugStringW(L"ERR: a step of the library's attach or detach failed");
    }
}

// Replaces the runtime library's handler, which would end the process. The release runtime passes no texts.
void LogInvalidParameter(
    const wchar_t* expression, const wchar_t* function, const wchar_t* file, unsigned line, std::uintptr_t)
{
    Step(
        [=]
        {
            if (file == nullptr)
                DebugLine(L"INVALID PARAMETER in CRT function detected - ignored");
            else
                DebugLine(L"%ws (line %d): %ws: INVALID PARAMETER in '%ws'", file, line, expression, function);
        });
}

// Restores the previous handler, because other modules of the process may share the runtime library, which must not
// call into this library after it is unloaded. A handler that another module has set since then is kept.
void GiveHandlerBack()
{
    const _invalid_parameter_handler former = formerHandler.exchange(nullptr);
    const _invalid_parameter_handler present = _set_invalid_parameter_handler(former);
    if (present != LogInvalidParameter)
        _set_invalid_parameter_handler(present);
}

// Queries these values while there is only one thread, so that later readers never wait for each other.
void AskModuleValues()
{
    AskDefaultCodePage();
    ProcessPaths();
    LibraryPaths();
    SystemVersion();
    SessionId();
}

void DecideTicks()
{
    constexpr unsigned short kFirstWithTickCount64 = 0x0600;
    auto& tickCount64 = Kernel32().p_GetTickCount64;
    DecideTickSource(SystemVersion() >= kFirstWithTickCount64 && tickCount64.IsThere()
                         ? reinterpret_cast<TickFunction>(tickCount64.Address())
                         : nullptr);
}

void ResolvePollingLocks()
{
    NTdll().p_RtlTryEnterCriticalSection.IsThere();
    NTdll().p_RtlLeaveCriticalSection.IsThere();
}

void CreateActivationContext(HMODULE library)
{
    ACTCTXW description = {};
    description.cbSize = sizeof description;
    description.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID | ACTCTX_FLAG_HMODULE_VALID;
    description.hModule = library;
    description.lpResourceName = MAKEINTRESOURCEW(kManifestResource);
    activationContext = CreateActCtxW(&description);
    if (activationContext == INVALID_HANDLE_VALUE)
        OutputDebugStringW(L"hActCtx == NULL, no manifest added, I guess");
}

void ReleaseActivationContext()
{
    const HANDLE context = activationContext.exchange(INVALID_HANDLE_VALUE);
    if (context != INVALID_HANDLE_VALUE)
        ReleaseActCtx(context);
}

// Warns if the system doesn't find the program's module by its path or file name, as parts of the diagnostics do.
void CheckModuleNames()
{
    if (GetModuleHandleW(ProcessPaths().path) == nullptr)
        OutputDebugStringW(L"WARNING: the roundtrip 'GetModuleHandle(GetModuleFileName(NULL))' returns 0 and thus "
                           L"implies that it does not work. DANGER! Crashes might follow!");
    if (GetModuleHandleW(ProcessPaths().file) == nullptr)
        OutputDebugStringW(L"WARNING: the roundtrip 'GetModuleHandle(ExtractFileName(GetModuleFileName(NULL)))' "
                           L"returns 0 and thus implies that it does not work. DANGER! Crashes might follow!");
}

void Run(void (*step)())
{
    if (step)
        Step(step);
}

} // namespace

void AttachModule(HMODULE library, const ModuleSteps& steps) noexcept
{
    formerHandler = _set_invalid_parameter_handler(LogInvalidParameter);
    SetLibraryHandle(library);
    ForgetDebuggerTest();
    Step(AskModuleValues);
    Step(DecideTicks);
    Step(ResolvePollingLocks);
    Run(steps.prepareStacks);
    Step([library] { CreateActivationContext(library); });
    Run(steps.startChannels);
    Step(CheckModuleNames);
}

void DetachModule(const ModuleSteps& steps) noexcept
{
    if (LibraryHandle() == nullptr)
        return;
    Run(steps.reportHandles);
    Run(steps.closeChannels);
    ReleaseActivationContext();
    GiveHandlerBack();
    SetLibraryHandle(nullptr);
}

namespace
{

std::atomic<bool> processIsEnding = false;

} // namespace

bool IsProcessEnding()
{
    return processIsEnding;
}

void SetProcessEnding()
{
    processIsEnding = true;
}

} // namespace qx
