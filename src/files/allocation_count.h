// Counts the living objects of a class.
#pragma once

#include <atomic>
#include <cstdint>
#include <typeinfo>

namespace qx
{

// Says with OutputDebugStringW that more objects of the type were destroyed than made. Not through the debug output,
// whose own objects may be counted.
void ReportNegativeObjectCount(const std::type_info& type, std::int32_t count);

// Base of the classes whose living objects are counted, process-wide and atomically, with the highest count ever seen.
// The number tells apart several such bases of one class.
template <class T, int n>
class clsAllocationCountVerifier
{
public:
    static std::int32_t LivingObjects() { return _living.load(std::memory_order_relaxed); }
    static std::int32_t MostLivingObjects() { return _highest.load(std::memory_order_relaxed); }

protected:
    clsAllocationCountVerifier() { CountOne(); }
    clsAllocationCountVerifier(const clsAllocationCountVerifier&) { CountOne(); }
    clsAllocationCountVerifier& operator=(const clsAllocationCountVerifier&) = default;

    // A negative count comes from an object that was destroyed twice, or never constructed: only objects that were
    // made can go.
    ~clsAllocationCountVerifier()
    {
        const std::int32_t count = _living.fetch_sub(1, std::memory_order_relaxed) - 1;
        if (count < 0)
            ReportNegativeObjectCount(typeid(T), count);
    }

private:
    static void CountOne()
    {
        const std::int32_t count = _living.fetch_add(1, std::memory_order_relaxed) + 1;
        std::int32_t highest = _highest.load(std::memory_order_relaxed);
        while (highest < count && !_highest.compare_exchange_weak(highest, count, std::memory_order_relaxed))
        {
        }
    }

    inline static std::atomic<std::int32_t> _living = 0;
    inline static std::atomic<std::int32_t> _highest = 0;
};

} // namespace qx
