// Several threads that do the same.
#pragma once

#include <thread>
#include <vector>

namespace qxtest
{

// Runs the function on threads of its own at once, each with a number from 0 on, and waits for their ends.
template <class Function>
void RunInThreads(unsigned count, const Function& function)
{
    std::vector<std::jthread> threads;
    for (unsigned number = 0; number < count; ++number)
        threads.emplace_back([&function, number] { function(number); });
}

} // namespace qxtest
