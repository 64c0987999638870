// Marks of a thread's life on a timeline, for whoever draws one.
#pragma once

#include <memory>

namespace qx
{

// What one thread writes to. It is made and used on that thread, and goes with the thread's object or its next start.
class ThreadMarks
{
public:
    virtual ~ThreadMarks() = default;
    virtual void WriteMessage(unsigned importance, const wchar_t* text) = 0;
};

// Null while nobody draws. The name is null for a thread without one.
using ThreadMarksMaker = std::unique_ptr<ThreadMarks> (*)(const char* threadName);

// Marks stand above the threads, and enter themselves here. Gives the former maker.
ThreadMarksMaker SetThreadMarksMaker(ThreadMarksMaker maker);
std::unique_ptr<ThreadMarks> MakeThreadMarks(const char* threadName);

} // namespace qx
