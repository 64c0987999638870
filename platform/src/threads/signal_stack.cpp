#include "threads/signal_stack.h"

#include <cerrno>
#include <cstddef>

#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>

namespace qxplatform
{
namespace
{

constexpr std::size_t kStackSize = 64 << 10;
constexpr std::size_t kGuardSize = 4096;

// Frees the stack of a thread that ends, and disables it first if it is still in use.
void FreeSignalStack(void* memory)
{
    stack_t present = {};
    if (sigaltstack(nullptr, &present) == 0 && present.ss_sp == static_cast<char*>(memory) + kGuardSize)
    {
        const stack_t none = {nullptr, SS_DISABLE, 0};
        sigaltstack(&none, nullptr);
    }
    munmap(memory, kGuardSize + kStackSize);
}

// The key of the stacks, whose destructor runs when a thread ends.
pthread_key_t StackKey()
{
    static const pthread_key_t key = []
    {
        pthread_key_t result = 0;
        pthread_key_create(&result, &FreeSignalStack);
        return result;
    }();
    return key;
}

} // namespace

bool ProvideSignalStack()
{
    const int error = errno;
    stack_t present = {};
    if (sigaltstack(nullptr, &present) == 0 && (present.ss_flags & SS_DISABLE) == 0)
        return true;
    void* memory = mmap(nullptr, kGuardSize + kStackSize, PROT_READ | PROT_WRITE,
        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    bool isProvided = false;
    if (memory != MAP_FAILED)
    {
        const stack_t own = {static_cast<char*>(memory) + kGuardSize, 0, kStackSize};
        isProvided = mprotect(memory, kGuardSize, PROT_NONE) == 0 && pthread_setspecific(StackKey(), memory) == 0 &&
                     sigaltstack(&own, nullptr) == 0;
        if (!isProvided)
        {
            pthread_setspecific(StackKey(), nullptr);
            munmap(memory, kGuardSize + kStackSize);
        }
    }
    errno = error;
    return isProvided;
}

} // namespace qxplatform

BOOL WINAPI QxProvideSignalStack(void)
{
    return qxplatform::ProvideSignalStack();
}
