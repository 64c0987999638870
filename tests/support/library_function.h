// Functions of a library that is loaded at run time.
#pragma once

#include <windows.h>

#include <cstdlib>

namespace qxtest
{

// Ends the process with code 9 if the library has no such function.
template <class Function>
Function* FindFunction(HMODULE library, const char* name)
{
    if (const FARPROC function = GetProcAddress(library, name))
        return reinterpret_cast<Function*>(function);
    std::exit(9);
}

// The function that a header declares under this name.
#define QXTEST_FUNCTION(library, name) qxtest::FindFunction<decltype(name)>(library, #name)

} // namespace qxtest
