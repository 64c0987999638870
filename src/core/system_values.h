#pragma once

#include <windows.h>

#include <atomic>

// Values of the module as a whole.
namespace qx
{

inline std::atomic<unsigned> defaultCodePage = 0; // 0 until it is asked for

unsigned AskDefaultCodePage();

// The system's code page for 8-bit text, asked for once: that of every new String and of all 8-bit arguments.
inline unsigned DefaultCodePage()
{
    const unsigned known = defaultCodePage.load(std::memory_order_relaxed);
    return known ? known : AskDefaultCodePage();
}

// The system's version: major number in the high byte, minor in the low one.
unsigned short SystemVersion();

// The language of the user interface, by which texts are compared and resources chosen. Asked for until it isn't 0.
unsigned short InterfaceLanguage();

// The module handle of the library, for its resources; null in a program that links the classes and has not said
// otherwise.
HMODULE LibraryHandle();
void SetLibraryHandle(HMODULE handle);

} // namespace qx
