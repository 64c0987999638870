#pragma once

#if defined(_WIN32) // exports are declared differently
#define FRAME_PROBE_API __declspec(dllexport)
#else
#define FRAME_PROBE_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C"
#endif
    FRAME_PROBE_API int
    ProbeFrame(int (*inside)(void*), void* user);
