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
    // A stretch of time, which may lie within another one.
    virtual void EnterSpan(const wchar_t* text) = 0;
    virtual void LeaveSpan() = 0;
};

// A stretch of time for as long as it lives; nothing without marks.
class ThreadSpan
{
public:
    ThreadSpan(ThreadMarks* marks, const wchar_t* text) : _marks(marks)
    {
        if (_marks)
            _marks->EnterSpan(text);
    }
    ThreadSpan(const ThreadSpan&) = delete;
    ThreadSpan& operator=(const ThreadSpan&) = delete;
    ~ThreadSpan()
    {
        if (_marks)
            _marks->LeaveSpan();
    }

private:
    ThreadMarks* const _marks;
};

// Null while nobody draws. The name is null for a thread without one.
using ThreadMarksMaker = std::unique_ptr<ThreadMarks> (*)(const char* threadName);

// Marks stand above the threads, and enter themselves here. Gives the former maker.
ThreadMarksMaker SetThreadMarksMaker(ThreadMarksMaker maker);
std::unique_ptr<ThreadMarks> MakeThreadMarks(const char* threadName);

} // namespace qx
