// Captures of 30 frames, compared with libunwind and with the C library. "known" captures the same stack again and
// again. In "first" each return address is met for the first time: there are many chains of functions, and each is
// called once.
#include <winnt.h>

#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include <dlfcn.h>

#define UNW_LOCAL_ONLY
#include <libunwind.h>

namespace
{

constexpr int kFrames = 30;
constexpr std::size_t kChains = 128;

using Capture = int (*)(void**);

int CaptureOurs(void** addresses)
{
    return RtlCaptureStackBackTrace(0, kFrames, addresses, nullptr);
}

int CaptureByLibunwind(void** addresses)
{
    return unw_backtrace(addresses, kFrames);
}

// Looks the function up in the C library, because libunwind exports a function of the same name.
int CaptureByCLibrary(void** addresses)
{
    static const auto function =
        reinterpret_cast<int (*)(void**, int)>(dlsym(dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD), "backtrace"));
    return function(addresses, kFrames);
}

struct Call
{
    Capture capture;
    benchmark::State* known; // null for a single capture
    double seconds;
};

void Measure(Call& call)
{
    void* addresses[kFrames];
    if (call.known != nullptr)
    {
        for ([[maybe_unused]] auto iteration : *call.known)
            if (call.capture(addresses) != kFrames)
                std::abort();
        return;
    }
    const auto start = std::chrono::steady_clock::now();
    if (call.capture(addresses) != kFrames)
        std::abort();
    call.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Functions with frames of different sizes.
template <std::size_t Chain, int Depth>
[[gnu::noinline]] void Descend(Call& call)
{
    volatile char memory[16 + Depth * 8];
    memory[Chain % sizeof memory] = 1;
    if constexpr (Depth > 0)
        Descend<Chain, Depth - 1>(call);
    else
        Measure(call);
    memory[0] = 2;
}

template <std::size_t... Chain>
constexpr std::array<void (*)(Call&), sizeof...(Chain)> AllChains(std::index_sequence<Chain...>)
{
    return {&Descend<Chain, kFrames>...};
}

constexpr auto kDescents = AllChains(std::make_index_sequence<kChains>());

void Known(benchmark::State& state, Capture capture)
{
    Call call{capture, &state, 0};
    kDescents[0](call);
}

// Each capture has call chains of its own, however often the benchmark is repeated.
void First(benchmark::State& state, Capture capture)
{
    static std::size_t next = 1;
    for ([[maybe_unused]] auto iteration : state)
    {
        Call call{capture, nullptr, 0};
        if (next == kChains)
            state.SkipWithError("no chain is left; use fewer repetitions");
        else
            kDescents[next++](call);
        state.SetIterationTime(call.seconds);
    }
}

BENCHMARK_CAPTURE(Known, known, &CaptureOurs)->Name("known/ours");
BENCHMARK_CAPTURE(Known, known, &CaptureByLibunwind)->Name("known/libunwind");
BENCHMARK_CAPTURE(Known, known, &CaptureByCLibrary)->Name("known/glibc");
BENCHMARK_CAPTURE(First, first, &CaptureOurs)->Name("first/ours")->Iterations(10)->UseManualTime();
BENCHMARK_CAPTURE(First, first, &CaptureByCLibrary)->Name("first/glibc")->Iterations(10)->UseManualTime();

} // namespace
