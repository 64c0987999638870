#include "zip/link_target.h"

#include <algorithm>

namespace qx
{

bool StaysInside(std::string_view target, std::size_t depth)
{
    if (target.empty() || target.front() == '/' || target.find('\0') != std::string_view::npos)
        return false;
    bool isBehindName = false;
    while (!target.empty())
    {
        const std::size_t end = std::min(target.find('/'), target.size());
        const std::string_view part = target.substr(0, end);
        target.remove_prefix(std::min(end + 1, target.size()));
        if (part.empty() || part == ".")
            continue;
        if (part != "..")
            isBehindName = true;
        else if (isBehindName || depth-- == 0)
            return false;
    }
    return true;
}

} // namespace qx
