// The library's own beginning and end within the process that loads it.
#pragma once

#include <windows.h>

namespace qx
{

// What the subsystems above have to do at the beginning and the end, each at its place in the order. A null step is
// left out.
struct ModuleSteps
{
    void (*startChannels)() = nullptr; // of the debug output
    void (*reportHandles)() = nullptr; // that were never closed
    void (*closeChannels)() = nullptr;
};

// To be called once the static objects are made. Never fails: what can't be had is logged at most, and a step that goes
// wrong doesn't keep the next ones from being done.
void AttachModule(HMODULE library, const ModuleSteps& steps) noexcept;

// To be called before the static objects go, those excepted that functions made for themselves only after the attach:
// the steps must not need them. Does nothing where nothing was attached.
void DetachModule(const ModuleSteps& steps) noexcept;

// Whether the library goes with its process, by whose end all other threads are gone already.
bool IsProcessEnding();
void SetProcessEnding();

} // namespace qx
