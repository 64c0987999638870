// A library without symbols, with frames of several kinds. It is built twice, with frames of different sizes but the
// same addresses.
#include "stack_probe.h"

#include "exported.h"

#include <stdlib.h>

using namespace qxtest;

namespace
{

ProbeFrames* sorted;

[[gnu::noinline]] void Large(ProbeFrames& frames)
{
    volatile char memory[PROBE_FRAME];
    memory[PROBE_FRAME / 2] = 1;
    frames.Note(__builtin_return_address(0));
    frames.callback(frames);
    memory[0] = memory[PROBE_FRAME / 2];
}

[[gnu::noinline]] void Aligned(ProbeFrames& frames)
{
    alignas(64) volatile char memory[128];
    volatile auto* const more = static_cast<volatile char*>(__builtin_alloca(100 + frames.count));
    memory[1] = 1;
    frames.Note(__builtin_return_address(0));
    Large(frames);
    more[0] = memory[1];
}

[[gnu::noinline]] int Compare(const void*, const void*)
{
    if (sorted->count > 1) // the address sanitizer compares more often
        return 0;
    sorted->Note(__builtin_return_address(0));
    Aligned(*sorted);
    return 0;
}

} // namespace

extern "C" EXPORTED void Probe(ProbeFrames& frames)
{
    int numbers[] = {1, 2};
    frames.Note(__builtin_return_address(0));
    sorted = &frames;
    qsort(numbers, 2, sizeof numbers[0], &Compare); // through a stub and a foreign library
    numbers[0] = 1;
    *const_cast<volatile int*>(numbers) = 2;
}
