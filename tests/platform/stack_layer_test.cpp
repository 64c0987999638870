// Walks from contexts, which only the layer offers, and captures while locks are held. Linux only.
#include "stack_support.h"

#include "stack/capture.h"
#include "stack/walker.h"

#include <algorithm>
#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <random>
#include <thread>
#include <tuple>

#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

using namespace qxtest;

namespace
{

Addresses captured;
Addresses refereed; // captured by the C library's unwinder, for comparison

[[gnu::noinline]] void CaptureBoth()
{
    captured = CapturedAddresses();
    captured.erase(captured.begin(), captured.begin() + 2);
    refereed.resize(100);
    refereed.resize(static_cast<std::size_t>(backtrace(refereed.data(), 100)));
    // The sanitizers add frames of their own.
    refereed.erase(refereed.begin(), std::find(refereed.begin(), refereed.end(), captured.front()));
}

class SignalHandler
{
public:
    SignalHandler(int signal, void (*handler)(int, siginfo_t*, void*), int flags = 0) : _signal(signal)
    {
        struct sigaction action = {};
        action.sa_sigaction = handler;
        action.sa_flags = SA_SIGINFO | flags;
        sigaction(signal, &action, &_former);
    }
    SignalHandler(const SignalHandler&) = delete;
    SignalHandler& operator=(const SignalHandler&) = delete;
    ~SignalHandler() { sigaction(_signal, &_former, nullptr); }

private:
    const int _signal;
    struct sigaction _former;
};

[[gnu::noinline]] void RaiseSignal(int flags)
{
    const SignalHandler handler(
        SIGUSR1, [](int, siginfo_t*, void*) { CaptureBoth(); }, flags);
    raise(SIGUSR1);
}

TEST(LayerCaptures, AgreeWithTheCLibraryAcrossSignals)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "this test allocates in its signal handler";
#endif
    CaptureBoth();
    EXPECT_EQ(captured, refereed);

    const auto memory = std::make_unique<char[]>(64 << 10);
    stack_t former;
    stack_t alternate{};
    alternate.ss_sp = memory.get();
    alternate.ss_size = 64 << 10;
    sigaltstack(&alternate, &former);
    for (const int flags : {0, SA_ONSTACK, SA_ONSTACK})
    {
        captured.clear();
        RaiseSignal(flags);
        EXPECT_EQ(captured, refereed);
        EXPECT_GT(captured.size(), 5u);
    }
    sigaltstack(&former, nullptr);
    std::thread(
        []
        {
            CaptureBoth();
            EXPECT_EQ(captured, refereed);
        })
        .join();
}

#if defined(__x86_64__)

CONTEXT ContextOf(const void* ucontext)
{
    const auto& registers = static_cast<const ucontext_t*>(ucontext)->uc_mcontext.gregs;
    CONTEXT context{};
    DWORD64* const fields[] = {&context.R8, &context.R9, &context.R10, &context.R11, &context.R12, &context.R13,
        &context.R14, &context.R15, &context.Rdi, &context.Rsi, &context.Rbp, &context.Rbx, &context.Rdx, &context.Rax,
        &context.Rcx, &context.Rsp, &context.Rip};
    for (int index = REG_R8; index <= REG_RIP; ++index)
        *fields[index - REG_R8] = static_cast<DWORD64>(registers[index]);
    return context;
}

// The frame that each walk must reach, and the counters.
struct Stepping
{
    std::uintptr_t stackPointer = 0;
    std::uintptr_t lowest = 0;
    std::uintptr_t highest = 0; // with `lowest`, the range of program counters in the frame
    unsigned steps = 0;
    unsigned failures = 0;
    DWORD64 failedAt = 0;
} stepping;

bool Reaches(CONTEXT context)
{
    BOOL isExact = TRUE;
    for (unsigned depth = 0; depth < 100; ++depth)
    {
        // In the frame itself the stack pointer may differ, because the flags are pushed before and after the call.
        if (context.Rip >= stepping.lowest && context.Rip <= stepping.highest)
            return depth == 0 || context.Rsp == stepping.stackPointer;
        if (!QxUnwindFrame(&context, &isExact))
            return false;
    }
    return false;
}

void OnStep(int, siginfo_t*, void* ucontext)
{
    const CONTEXT context = ContextOf(ucontext);
    ++stepping.steps;
    // A capture in the signal handler must work wherever the signal has interrupted the thread.
    void* addresses[100];
    const WORD count = RtlCaptureStackBackTrace(0, 100, addresses, nullptr);
    const bool isCaptured = std::any_of(addresses, addresses + count,
        [](void* address)
        {
            const auto value = reinterpret_cast<std::uintptr_t>(address);
            return value >= stepping.lowest && value <= stepping.highest;
        });
    if (isCaptured && Reaches(context))
        return;
    ++stepping.failures;
    stepping.failedAt = context.Rip;
}

// Calls a function and walks the stack before each of its instructions.
[[gnu::noinline, gnu::optimize("O2")]] void StepThrough(void (*function)())
{
    __asm__ volatile(
        "leaq 1f(%%rip), %%rax\n\t"
        "movq %%rax, %[lowest]\n\t"
        "leaq 2f(%%rip), %%rax\n\t"
        "movq %%rax, %[highest]\n\t"
        "movq %%rsp, %%r12\n\t"
        "andq $-16, %%rsp\n\t"
        "subq $128, %%rsp\n\t"
        "movq %%rsp, %[stackPointer]\n\t"
        "pushfq\n\t"
        "orl $0x100, (%%rsp)\n\t"
        "popfq\n"
        "1:\n\t"
        "call *%[function]\n\t"
        "pushfq\n\t"
        "andl $~0x100, (%%rsp)\n\t"
        "popfq\n"
        "2:\n\t"
        "movq %%r12, %%rsp\n\t"
        : [lowest] "=m"(stepping.lowest), [highest] "=m"(stepping.highest), [stackPointer] "=m"(stepping.stackPointer)
        : [function] "r"(function)
        : "rax", "rcx", "rdx", "rsi", "rdi", "r8", "r9", "r10", "r11", "r12", "memory", "cc", "xmm0", "xmm1", "xmm2",
        "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11", "xmm12", "xmm13", "xmm14", "xmm15");
}

ProbeFunction probe;

TEST(LayerWalks, ReachTheCallerFromEveryInstruction)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers read the clock in a loop that doesn't end if each of its steps is slow";
#endif
    const SignalHandler handler(SIGTRAP, &OnStep);
    // The library's functions are bound at their first call, through the loader's own code.
    void* const library = dlopen(QXUT_STACK_PROBE_FOLDER "/libsmall_stack_probe.so", RTLD_LAZY | RTLD_LOCAL);
    ASSERT_NE(library, nullptr);
    probe = reinterpret_cast<ProbeFunction>(dlsym(library, "Probe"));
    const std::tuple<const char*, void (*)(), unsigned> cases[] = {
        {"a call through stubs",
            []
            {
                ProbeFrames frames;
                frames.callback = [](ProbeFrames&) {
                };
                probe(frames);
            },
            300},
        // Only time() is stepped in the kernel's image. Its other clock functions retry while the clock advances, which
        // never ends at single-step speed.
        {"the kernel's image", [] { std::time(nullptr); }, 6},
        {"allocation", [] { std::free(std::malloc(5000)); }, 100},
        {"the loader's lock", [] { dl_iterate_phdr([](dl_phdr_info*, std::size_t, void*) { return 0; }, nullptr); },
            100},
        {"a jump between functions",
            []
            {
                jmp_buf place;
                if (setjmp(place) == 0)
                    longjmp(place, 1);
            },
            30},
    };
    for (const auto& [name, function, leastSteps] : cases)
    {
        stepping.steps = stepping.failures = 0;
        StepThrough(function);
        EXPECT_EQ(stepping.failures, 0u) << name << ": " << stepping.steps << " steps, failed at " << std::hex
                                         << stepping.failedAt;
        EXPECT_GE(stepping.steps, leastSteps) << name;
    }
    dlclose(library);
}

sigjmp_buf afterFault;
CONTEXT faultContext;

TEST(LayerWalks, WildCallsAndGarbage)
{
    const auto leave = [](int, siginfo_t*, void* ucontext)
    {
        faultContext = ContextOf(ucontext);
        siglongjmp(afterFault, 1);
    };
    std::optional<SignalHandler> handler(std::in_place, SIGSEGV, leave);
    for (const std::uintptr_t wild : {std::uintptr_t{0}, std::uintptr_t{0x1234567000}})
    {
        if (sigsetjmp(afterFault, 1) == 0)
        {
            auto* volatile function = reinterpret_cast<void (*)()>(wild);
            function();
        }
        EXPECT_EQ(faultContext.Rip, wild);
        BOOL isExact = TRUE;
        ASSERT_TRUE(QxUnwindFrame(&faultContext, &isExact));
        EXPECT_FALSE(isExact);
        Dl_info info{};
        dladdr(reinterpret_cast<void*>(faultContext.Rip), &info);
        EXPECT_EQ(info.dli_fbase, GetModuleHandleW(nullptr));
        EXPECT_TRUE(QxUnwindFrame(&faultContext, &isExact));
    }
    handler.reset();

    // Fills the registers with garbage of all kinds. Every walk must end, and none may fault.
    std::mt19937_64 random(1);
    CONTEXT here;
    RtlCaptureContext(&here);
    const auto memory = std::make_unique<std::uint64_t[]>(4096);
    for (std::size_t index = 0; index < 4096; ++index)
        memory[index] = here.Rip + random() % 100000;
    unsigned frames = 0;
    for (unsigned round = 0; round < 20000; ++round)
    {
        CONTEXT context;
        std::generate_n(reinterpret_cast<std::uint64_t*>(&context), sizeof context / 8, std::ref(random));
        const std::uint64_t code[] = {here.Rip, reinterpret_cast<std::uint64_t>(&qsort), random()};
        const std::uint64_t stacks[] = {here.Rsp, reinterpret_cast<std::uint64_t>(memory.get()), random(), 8};
        context.Rip = code[round % 3] + random() % 100000;
        context.Rsp = stacks[round % 4] + random() % 16384;
        context.Rbp = stacks[random() % 4] + random() % 16384;
        BOOL isExact = round % 2;
        for (unsigned depth = 0; depth < 200 && QxUnwindFrame(&context, &isExact); ++depth)
            ++frames;
    }
    EXPECT_GT(frames, 1000u);
}

TEST(LayerCaptures, EndOnADamagedStack)
{
    // Overwrites the saved registers and the return address of its caller, and restores them.
    std::size_t count = 0;
    const auto damage = [&count](std::uintptr_t value)
    {
        auto* const frame = static_cast<std::uintptr_t*>(__builtin_frame_address(0));
        const std::uintptr_t kept[] = {frame[0], frame[1]};
        auto* const words = const_cast<volatile std::uintptr_t*>(frame);
        words[0] = value;
        words[1] = value;
        void* addresses[100];
        count = RtlCaptureStackBackTrace(0, 100, addresses, nullptr);
        words[0] = kept[0];
        words[1] = kept[1];
    };
    for (const std::uintptr_t value : {std::uintptr_t{0}, std::uintptr_t{8}, ~std::uintptr_t{0},
             std::uintptr_t{0x7FFFFFFFEFF8}, reinterpret_cast<std::uintptr_t>(&stepping)})
    {
        damage(value);
        EXPECT_GE(count, 1u);
        EXPECT_LE(count, 3u) << std::hex << value;
    }
}

#endif

// This thread holds the loader's lock while it iterates. A capture on another thread would block if it needed the lock.
TEST(LayerCaptures, NeedNoLockOfTheLoader)
{
    const ProbeLibrary library("large_stack_probe"); // the rules of a new library aren't cached yet
    const ProbeFunction function = library.Function();
    std::atomic<int> state = 0;
    std::thread thread(
        [&]
        {
            static std::atomic<int>* progress;
            progress = &state;
            ProbeFrames frames;
            frames.callback = [](ProbeFrames&)
            {
                void* addresses[30];
                progress->store(1);
                while (progress->load() == 1)
                {
                }
                const WORD count = RtlCaptureStackBackTrace(0, 30, addresses, nullptr);
                progress->store(count > 5 ? 3 : 4);
            };
            function(frames);
        });
    while (state != 1)
        sched_yield();
    dl_iterate_phdr(
        [](dl_phdr_info*, std::size_t, void* data)
        {
            auto& progress = *static_cast<std::atomic<int>*>(data);
            progress = 2;
            for (int wait = 0; wait < 5000 && progress == 2; ++wait)
                usleep(1000);
            return progress == 2 ? 0 : 1;
        },
        &state);
    EXPECT_EQ(state, 3);
    thread.join();
}

[[gnu::noinline]] Addresses CapturedFrom(const qxplatform::FrameRegisters& start, DWORD count)
{
    Addresses addresses(100);
    addresses.resize(QxCaptureFrom(&start, count, addresses.data()));
    return addresses;
}

TEST(LayerCaptures, BeginFurtherOut)
{
    const auto* const frame = static_cast<const std::uintptr_t*>(__builtin_frame_address(0));
    const qxplatform::FrameRegisters start{reinterpret_cast<std::uintptr_t>(frame + 2), frame[0], frame[1]};
    Addresses all = CapturedAddresses();
    all.erase(all.begin(), all.begin() + 2); // that function and this one
    EXPECT_GT(all.size(), 3u);
    EXPECT_EQ(CapturedFrom(start, 100), all);
    all.resize(3);
    EXPECT_EQ(CapturedFrom(start, 3), all);
}

TEST(LayerCaptures, WorkInAForkedChild)
{
    const Addresses before = CapturedAddresses();
    const pid_t child = fork();
    if (child == 0)
    {
        void* addresses[100];
        const WORD count = RtlCaptureStackBackTrace(0, 100, addresses, nullptr);
        // The first address is in this function instead of the one called above.
        _exit(count + 1u == before.size() && addresses[count - 1] == before.back() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

} // namespace
