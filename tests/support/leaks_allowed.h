// For tests that terminate a thread: it leaves its memory behind. What the present thread allocates in the scope of
// this is no leak to the sanitizer.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace qxtest
{

#if defined(__SANITIZE_ADDRESS__)
using LeaksAllowed = __lsan::ScopedDisabler;
#else
struct LeaksAllowed
{
    LeaksAllowed() {}
};
#endif

} // namespace qxtest
