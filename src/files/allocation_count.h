// Counts the live objects of a class.
#pragma once

#include <atomic>
#include <cstdint>
#include <typeinfo>

namespace qx
{

// Reports through OutputDebugStringW that more objects of the type were destroyed than created. The debug output can't
// be used, because its own objects may be among the counted ones.
void ReportNegativeObjectCount(const std::type_info& type, std::int32_t count);

// Base class that counts the live objects of a class, process-wide and atomically, and records the highest count. `n`
// distinguishes several such bases of one class.
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

    // A negative count means that an object was destroyed twice or never constructed.
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
