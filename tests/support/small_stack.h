// Threads with small stacks, on linux.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>

#include <limits.h>
#include <pthread.h>

namespace qxtest
{

// Runs the function on a thread with a stack of the given size. The process crashes if the function needs more.
inline void RunOnStack(std::size_t kilobytes, std::function<void()> body)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    // Some processors need more than the smallest size.
    const std::size_t size = std::max<std::size_t>(kilobytes * 1024, PTHREAD_STACK_MIN);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, size), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(
                  &thread, &attributes,
                  [](void* given) -> void*
                  {
                      (*static_cast<std::function<void()>*>(given))();
                      return nullptr;
                  },
                  &body),
        0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

} // namespace qxtest
