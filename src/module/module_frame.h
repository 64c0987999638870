// Initialisation and cleanup of the library when a process loads and unloads it.
#pragma once

#include <windows.h>

namespace qx
{

// The steps of the subsystems in higher layers. Null steps are skipped.
struct ModuleSteps
{
    void (*prepareStacks)() = nullptr; // resolves what stack traces need
    void (*startChannels)() = nullptr; // starts the debug output
    void (*reportHandles)() = nullptr; // reports handles that were never closed
    void (*closeChannels)() = nullptr;
};

// Called after the static objects are constructed. Never fails: a failing step is at most logged, and the next steps
// still run.
void AttachModule(HMODULE library, const ModuleSteps& steps) noexcept;

// Called before the static objects are destroyed. Static objects that functions created after the attach are already
// gone, so the steps must not use them. Does nothing if AttachModule wasn't called.
void DetachModule(const ModuleSteps& steps) noexcept;

// True if the library is unloaded because the process ends. All other threads have been terminated by then.
bool IsProcessEnding();
void SetProcessEnding();

} // namespace qx
