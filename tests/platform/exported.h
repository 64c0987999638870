// Marks the functions that the test libraries export.
#pragma once

#if defined(_WIN32) // each target marks exported names differently
#define EXPORTED __declspec(dllexport)
#else
#define EXPORTED __attribute__((visibility("default")))
#endif
