// Runs a function on several threads.
#pragma once

#include <thread>
#include <vector>

namespace qxtest
{

// Runs the function on `count` new threads at once, passes a number from 0 on to each call, and waits for the threads
// to end.
template <class Function>
void RunInThreads(unsigned count, const Function& function)
{
    std::vector<std::jthread> threads;
    for (unsigned number = 0; number < count; ++number)
        threads.emplace_back([&function, number] { function(number); });
}

} // namespace qxtest
