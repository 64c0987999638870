#pragma once

#if defined(_WIN32) // exports are declared differently
#define PROBE_API __declspec(dllexport)
#else
#define PROBE_API __attribute__((visibility("default")))
#endif

// Both call inside(user) from functions with variables.
extern "C" int ProbeVariables(void (*inside)(void*), void* user);
extern "C" int ProbeNames(void (*inside)(void*), void* user);
