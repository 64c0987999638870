#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace qx
{

// Draws the levels of skip-list nodes. Random bits are used in pairs: one call of the generator gives seven of them,
// and what a draw leaves over serves the next one.
class WCLevelSource
{
public:
    // `random` gives at least 14 random bits, as rand() does everywhere.
    explicit WCLevelSource(int (*random)());
    WCLevelSource(const WCLevelSource&) = delete;
    WCLevelSource& operator=(const WCLevelSource&) = delete;
    ~WCLevelSource();

    // Counts the pairs whose AND with the selector (1 or 3) is 0, up to the first where it isn't; at most `limit`.
    int Draw(unsigned selector, int limit);

    // The one that all skip lists of the module draw from.
    static WCLevelSource& Module();

private:
    unsigned NextPair();

    int (*_random)();
    const bool _several; // processors: with one there is nothing to guard against but a switch of threads, see below
    CRITICAL_SECTION _lock;
    // The pairs left, below a marker bit. One word, so that a thread switch on a single processor can at worst hand out
    // a pair twice.
    std::atomic<std::uint32_t> _pairs;
};

} // namespace qx
