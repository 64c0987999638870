// Chains of sectors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace qxplatform
{

// The greatest link to a sector or directory entry. Greater values mean that there is no link.
constexpr std::uint32_t kGreatestLink = 0xFFFFFFF9;
constexpr std::uint32_t kNoLink = 0xFFFFFFFF;

// Detects a cycle in a path of links, by Brent's method: without a list of the visited links, and within three times
// the length of the path.
class CircleCheck
{
public:
    // Returns false if the path is known to contain a cycle.
    bool Pass(std::uint32_t link)
    {
        if (link == _mark)
            return false;
        if (++_steps == _stepsToMark)
        {
            _mark = link;
            _steps = 0;
            _stepsToMark *= 2;
        }
        return true;
    }

private:
    std::uint32_t _mark = kNoLink;
    std::uint64_t _steps = 0; // since the mark was set
    std::uint64_t _stepsToMark = 1;
};

// A table of links: the successor of each sector.
class LinkTable
{
public:
    // Returns kNoLink, or any other value above kGreatestLink, at the end of a chain and if the table can't be read.
    virtual std::uint32_t Next(std::uint32_t sector) = 0;

protected:
    ~LinkTable() = default;
};

// The sectors of a stream in their order. They are looked up when they are needed, and remembered. The number of
// sectors is limited by the table, which never contains more links than the file has bytes.
class SectorChain
{
public:
    explicit SectorChain(std::uint32_t first) : _next(first) {}

    // Returns nothing beyond the end of the chain. A damaged chain ends where the damage is.
    std::optional<std::uint32_t> At(std::uint64_t index, LinkTable& table);

private:
    std::vector<std::uint32_t> _sectors;
    std::uint32_t _next;
    CircleCheck _check;
};

} // namespace qxplatform
