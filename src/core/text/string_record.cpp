#include "core/text/string_record.h"

#include "core/debug_line.h"
#include "core/debugger.h"

#include <new>

namespace qx
{

StringRecord* StringRecord::Create(std::size_t capacity)
{
    static_assert(alignof(StringRecord) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
    constexpr std::size_t kMost = (SIZE_MAX / 2 - sizeof(StringRecord)) / sizeof(wchar_t);
    if (capacity > kMost)
        throw std::bad_alloc();
    void* memory = ::operator new(sizeof(StringRecord) + capacity * sizeof(wchar_t));
    auto* text = reinterpret_cast<wchar_t*>(static_cast<char*>(memory) + sizeof(StringRecord));
    if (capacity > 0)
        text[0] = 0;
    return ::new (memory) StringRecord{text, capacity, {1}};
}

void StringRecord::Release(StringRecord* record) noexcept
{
    // No other thread can add a reference to a record that has only one, so no atomic subtraction is needed here. The
    // stored 0 makes a second release detectable as long as the memory isn't reused.
    std::int32_t left = 0;
    if (record->usage.load(std::memory_order_acquire) != 1)
        left = record->usage.fetch_sub(1, std::memory_order_acq_rel) - 1;
    else
        record->usage.store(0, std::memory_order_relaxed);
    if (left > 0)
        return;
    if (left < 0)
    {
        DebugLine(L"WRN: String buffer released twice (usage=%d)", left);
        BreakOrTrace(50);
        return;
    }
    record->~StringRecord();
    ::operator delete(static_cast<void*>(record));
}

} // namespace qx
