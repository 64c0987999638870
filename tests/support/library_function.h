// Functions of a library that is loaded at run time.
#pragma once

#include <windows.h>

#include <cstdlib>

namespace qxtest
{

// Returns the exported function. Ends the process with exit code 9 if the library has none by that name.
template <class Function>
Function* FindFunction(HMODULE library, const char* name)
{
    if (const FARPROC function = GetProcAddress(library, name))
        return reinterpret_cast<Function*>(function);
    std::exit(9);
}

// The library's function, with the name and type that a header declares.
#define QXTEST_FUNCTION(library, name) qxtest::FindFunction<decltype(name)>(library, #name)

} // namespace qxtest
