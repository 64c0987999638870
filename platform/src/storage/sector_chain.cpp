#include "storage/sector_chain.h"

namespace qxplatform
{

std::optional<std::uint32_t> SectorChain::At(std::uint64_t index, LinkTable& table)
{
    while (_sectors.size() <= index)
    {
        if (_next > kGreatestLink)
            return std::nullopt;
        if (!_check.Pass(_next))
        {
            _next = kNoLink;
            return std::nullopt;
        }
        _sectors.push_back(_next);
        _next = table.Next(_next);
    }
    return _sectors[static_cast<std::size_t>(index)];
}

} // namespace qxplatform
