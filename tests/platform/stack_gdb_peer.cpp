// Captures its stack in a signal handler below several frames, prints the addresses and stops, so that a debugger can
// compare them with its own.
#include <winnt.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

// The debugger's breakpoint.
extern "C" [[gnu::noinline]] void StopHere()
{
    __asm__ volatile("");
}

namespace
{

[[gnu::noinline]] void Capture()
{
    void* addresses[100];
    const unsigned count = RtlCaptureStackBackTrace(0, 100, addresses, nullptr);
    for (unsigned index = 1; index < count; ++index) // the first one is in this function
        std::printf("ours %p\n", addresses[index]);
    std::fflush(stdout);
    StopHere();
    __asm__ volatile(""); // keeps the frame
}

void OnSignal(int)
{
    Capture();
    __asm__ volatile("");
}

template <int Depth>
[[gnu::noinline]] int Descend(int seed)
{
    alignas(Depth % 3 == 0 ? 64 : 16) volatile char memory[40 * Depth + 8];
    memory[0] = static_cast<char>(seed);
    int result = 0;
    if constexpr (Depth > 0)
        result = Descend<Depth - 1>(seed + 1);
    else
        result = raise(SIGUSR1);
    return result + memory[0];
}

int Compare(const void*, const void*)
{
    return Descend<12>(1);
}

} // namespace

int main()
{
    int numbers[] = {2, 1};
    std::signal(SIGUSR1, &OnSignal);
    std::qsort(numbers, 2, sizeof numbers[0], &Compare);
    return 0;
}
