// Marks for displaying the life of a thread on a timeline.
#pragma once

#include <memory>

namespace qx
{

// Receives the marks of one thread. Created and used on that thread, and destroyed with the thread object or at its
// next start.
class ThreadMarks
{
public:
    virtual ~ThreadMarks() = default;
    virtual void WriteMessage(unsigned importance, const wchar_t* text) = 0;
    // Begins a time span. Spans may be nested.
    virtual void EnterSpan(const wchar_t* text) = 0;
    virtual void LeaveSpan() = 0;
};

// A time span that lasts as long as this object. Does nothing if `marks` is null.
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

// Creates the marks of a thread. The name is null for a thread without a name.
using ThreadMarksMaker = std::unique_ptr<ThreadMarks> (*)(const char* threadName);

// Marks are implemented in a higher layer, which registers itself here. Returns the previous maker.
ThreadMarksMaker SetThreadMarksMaker(ThreadMarksMaker maker);
std::unique_ptr<ThreadMarks> MakeThreadMarks(const char* threadName);

} // namespace qx
