// For programs that unload the library. What it keeps for as long as its image is mapped (a few small objects that any
// thread may still use) has no holder once the image is gone, and would count as a leak.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options()
{
    return "detect_leaks=0";
}
#endif
