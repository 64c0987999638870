#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace qx
{

// Draws random levels for skip-list nodes. It uses random bits in pairs: one call of the generator provides seven
// pairs, and pairs that one draw leaves over are used by the next.
class WCLevelSource
{
public:
    // `random` must return at least 14 random bits, as rand() does on all systems.
    explicit WCLevelSource(int (*random)());
    WCLevelSource(const WCLevelSource&) = delete;
    WCLevelSource& operator=(const WCLevelSource&) = delete;
    ~WCLevelSource();

    // Draws pairs until the AND of a pair and the selector (1 or 3) isn't 0. Returns the number of pairs before it, at
    // most `limit`.
    int Draw(unsigned selector, int limit);

    // Returns the instance that all skip lists of the module use.
    static WCLevelSource& Module();

private:
    unsigned NextPair();

    int (*_random)();
    const bool _several; // true with more than one processor; with a single one no lock is needed, see below
    CRITICAL_SECTION _lock;
    // The remaining pairs, below a marker bit. They are in one word, so the worst effect of a thread switch on a single
    // processor is that a pair is used twice.
    std::atomic<std::uint32_t> _pairs;
};

} // namespace qx
