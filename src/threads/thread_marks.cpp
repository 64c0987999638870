#include "threads/thread_marks.h"

#include <atomic>

namespace qx
{
namespace
{

std::atomic<ThreadMarksMaker> marksMaker = nullptr;

} // namespace

ThreadMarksMaker SetThreadMarksMaker(ThreadMarksMaker maker)
{
    return marksMaker.exchange(maker);
}

std::unique_ptr<ThreadMarks> MakeThreadMarks(const char* threadName)
{
    const ThreadMarksMaker maker = marksMaker.load();
    return maker ? maker(threadName) : nullptr;
}

} // namespace qx
