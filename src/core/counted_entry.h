// Detects re-entry.
#pragma once

#include <atomic>

namespace qx
{

// Counts the callers that are inside a scope.
class CountedEntry
{
public:
    explicit CountedEntry(std::atomic<int>& count) : _count(count), _isFirst(++count == 1) {}
    CountedEntry(const CountedEntry&) = delete;
    CountedEntry& operator=(const CountedEntry&) = delete;
    ~CountedEntry() { --_count; }

    bool IsFirst() const { return _isFirst; }

private:
    std::atomic<int>& _count;
    const bool _isFirst;
};

} // namespace qx
