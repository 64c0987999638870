// For loops that wait for another processor.
#pragma once

namespace qxplatform
{

inline void PauseProcessor()
{
#if defined(__x86_64__)
    __builtin_ia32_pause();
#endif
}

} // namespace qxplatform
