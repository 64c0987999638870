// For tests that terminate a thread and thus lose its memory. While this object exists, allocations of the current
// thread don't count as leaks.
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
