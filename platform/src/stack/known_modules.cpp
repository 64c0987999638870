#include "stack/known_modules.h"

#include "stack/rule_cache.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstring>
#include <iterator>

#include <dlfcn.h>
#include <pthread.h>
#include <sys/auxv.h>

namespace qxplatform
{
namespace
{

struct Record
{
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    std::uintptr_t index = 0; // the address of the unwind table's index
    std::uintptr_t buildId = 0;
    std::uint64_t buildIdSize = 0;
    std::uint64_t id[2] = {};
};

constexpr std::size_t kWords = sizeof(Record) / 8;

// A record that can be read while it is written.
class Slot
{
public:
    // Returns false if the record is being written.
    bool Read(Record& record) const
    {
        const std::uint32_t before = _sequence.load(std::memory_order_acquire);
        std::array<std::uint64_t, kWords> words;
        for (std::size_t index = 0; index < kWords; ++index)
            words[index] = _words[index].load(std::memory_order_acquire);
        record = std::bit_cast<Record>(words);
        return (before & 1) == 0 && _sequence.load(std::memory_order_relaxed) == before;
    }

    // Returns true if the record describes the given module and the build id in memory is still the same.
    bool IsOf(std::uintptr_t begin, std::uintptr_t end, std::uintptr_t index) const
    {
        const std::uint32_t before = _sequence.load(std::memory_order_acquire);
        if (Word(kBegin) != begin || Word(kEnd) != end || Word(kIndex) != index)
            return false;
        // The address of the build id belongs to this module only if it was read together with the rest of the record.
        const auto* const buildId = reinterpret_cast<const std::uint8_t*>(Word(kBuildId));
        const std::uint64_t size = Word(kBuildIdSize);
        const std::uint64_t id[2] = {Word(kId), Word(kId + 1)};
        if ((before & 1) != 0 || _sequence.load(std::memory_order_relaxed) != before)
            return false;
        if (size == sizeof id) [[likely]]
            return std::memcmp(buildId, id, sizeof id) == 0;
        return std::memcmp(buildId, id, size) == 0;
    }

    // Only one thread writes at a time.
    void Write(const Record& record)
    {
        const auto words = std::bit_cast<std::array<std::uint64_t, kWords>>(record);
        _sequence.fetch_add(1, std::memory_order_relaxed);
        for (std::size_t index = 0; index < kWords; ++index)
            _words[index].store(words[index], std::memory_order_release);
        _sequence.fetch_add(1, std::memory_order_release);
    }

    // Clears the record. Called in a forked child, because another thread may have been writing it at the fork.
    void Reset()
    {
        _sequence.store(0, std::memory_order_relaxed);
        Write(Record());
    }

private:
    // The fields of a record as words.
    static constexpr std::size_t kBegin = offsetof(Record, begin) / 8;
    static constexpr std::size_t kEnd = offsetof(Record, end) / 8;
    static constexpr std::size_t kIndex = offsetof(Record, index) / 8;
    static constexpr std::size_t kBuildId = offsetof(Record, buildId) / 8;
    static constexpr std::size_t kBuildIdSize = offsetof(Record, buildIdSize) / 8;
    static constexpr std::size_t kId = offsetof(Record, id) / 8;

    std::uint64_t Word(std::size_t index) const { return _words[index].load(std::memory_order_acquire); }

    std::atomic<std::uint32_t> _sequence = 0;
    std::atomic<std::uint64_t> _words[kWords] = {};
};

// Modules begin in different pages, which determine their slots. If two modules have the same slot, the newer one
// replaces the other. Processes have fewer modules than there are slots, so this is rare.
constexpr std::size_t kSlots = 512;

constinit Slot slots[kSlots];
constinit std::atomic<bool> isWriting = false;

Slot& SlotOf(std::uintptr_t begin)
{
    return slots[(begin >> 12 ^ begin >> 21) % kSlots];
}

constinit ModuleRange permanentModules[2] = {};

[[gnu::constructor]] void FindPermanentModules()
{
    const std::uintptr_t addresses[] = {getauxval(AT_ENTRY), reinterpret_cast<std::uintptr_t>(&getauxval)};
    for (std::size_t index = 0; index < std::size(addresses); ++index)
    {
        dl_find_object object;
        if (_dl_find_object(reinterpret_cast<void*>(addresses[index]), &object) != 0)
            continue;
        const auto begin = reinterpret_cast<std::uintptr_t>(object.dlfo_map_start);
        permanentModules[index] = {begin, reinterpret_cast<std::uintptr_t>(object.dlfo_map_end) - begin};
    }
}

void ReadBuildId(const ModuleTables& tables, std::uint64_t (&id)[2])
{
    id[0] = id[1] = 0;
    std::memcpy(id, tables.buildId, tables.buildIdSize);
}

bool Overlap(const Record& first, const Record& second)
{
    return first.begin < second.end && second.begin < first.end;
}

[[gnu::constructor]] void PrepareModulesForForks()
{
    pthread_atfork(nullptr, nullptr,
        []
        {
            if (!isWriting.exchange(false))
                return;
            for (Slot& slot : slots)
                slot.Reset();
        });
}

// Stores the record of a module, and removes the records and cached rules of modules that were loaded in its range
// before. Returns false if another thread is writing, or if this one was writing when a signal interrupted it.
bool Register(const ModuleTables& tables, RuleCache& cache)
{
    if (isWriting.exchange(true, std::memory_order_acquire))
        return false;
    Record record;
    record.begin = tables.begin;
    record.end = tables.end;
    record.index = reinterpret_cast<std::uintptr_t>(tables.table.index.begin);
    record.buildId = reinterpret_cast<std::uintptr_t>(tables.buildId);
    record.buildIdSize = tables.buildIdSize;
    ReadBuildId(tables, record.id);
    Slot& slot = SlotOf(tables.begin);
    for (Slot& other : slots)
    {
        Record present;
        if (other.Read(present) && (Overlap(present, record) || (&other == &slot && present.end != 0)))
        {
            other.Write(Record());
            cache.Remove(present.begin, present.end);
        }
    }
    cache.Remove(record.begin, record.end);
    slot.Write(record);
    isWriting.store(false, std::memory_order_release);
    return true;
}

} // namespace

bool FindPermanentModule(std::uintptr_t address, ModuleRange& range)
{
    for (const ModuleRange& permanent : permanentModules)
        if (permanent.Contains(address))
        {
            range = permanent;
            return true;
        }
    return false;
}

bool FindKnownModule(std::uintptr_t address, RuleCache& cache, ModuleRange& range)
{
    dl_find_object object;
    if (_dl_find_object(reinterpret_cast<void*>(address), &object) != 0)
        return false;
    const auto begin = reinterpret_cast<std::uintptr_t>(object.dlfo_map_start);
    const auto end = reinterpret_cast<std::uintptr_t>(object.dlfo_map_end);
    range = {begin, end - begin};
    // The build id is in the first page of the module.
    if (SlotOf(begin).IsOf(begin, end, reinterpret_cast<std::uintptr_t>(object.dlfo_eh_frame))) [[likely]]
        return true;
    ModuleTables tables;
    return FindModuleTables(address, tables) && tables.buildId != nullptr && tables.table.index.begin != nullptr &&
           Register(tables, cache);
}

} // namespace qxplatform
