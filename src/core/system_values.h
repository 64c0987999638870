#pragma once

#include <windows.h>

#include <atomic>

// Values that hold for the whole module.
namespace qx
{

inline std::atomic<unsigned> defaultCodePage = 0; // 0 until the first query

unsigned AskDefaultCodePage();

// Returns the system's code page for 8-bit text, which is queried once. New strings and all 8-bit arguments use it.
inline unsigned DefaultCodePage()
{
    const unsigned known = defaultCodePage.load(std::memory_order_relaxed);
    return known ? known : AskDefaultCodePage();
}

// Returns the system's version: the major number in the high byte, the minor number in the low byte.
unsigned short SystemVersion();

// Returns the language of the user interface, which determines the comparison of texts and the choice of resources. The
// result is cached unless it is 0.
unsigned short InterfaceLanguage();

// Returns the module handle of the library, used to load its resources. It is null in programs that link the classes
// directly, unless they call SetLibraryHandle.
HMODULE LibraryHandle();
void SetLibraryHandle(HMODULE handle);

} // namespace qx
