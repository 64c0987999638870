#pragma once

#if defined(qxdbghelp_probe_EXPORTS) && defined(_WIN32) // exports
#define PROBE_API __declspec(dllexport)
#elif defined(_WIN32) // imports
#define PROBE_API __declspec(dllimport)
#else
#define PROBE_API __attribute__((visibility("default")))
#endif

// All call inside(user) from functions with variables.
extern "C" PROBE_API int ProbeVariables(void (*inside)(void*), void* user);
extern "C" PROBE_API int ProbeNames(void (*inside)(void*), void* user);
// Has two parameters and 50 local variables.
extern "C" PROBE_API int ProbeManyVariables(void (*inside)(void*), void* user);
