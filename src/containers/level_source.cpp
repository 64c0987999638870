#include "containers/level_source.h"

#include <cstdlib>

namespace qx
{

namespace
{

constexpr std::uint32_t kNoPairs = 1;
constexpr std::uint32_t kSevenPairs = 0x3FFF;

bool HasSeveralProcessors()
{
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return info.dwNumberOfProcessors >= 2;
}

} // namespace

WCLevelSource::WCLevelSource(int (*random)()) : _random(random), _several(HasSeveralProcessors()), _pairs(kNoPairs)
{
    InitializeCriticalSection(&_lock);
}

WCLevelSource::~WCLevelSource()
{
    DeleteCriticalSection(&_lock);
}

WCLevelSource& WCLevelSource::Module()
{
    static WCLevelSource source(&std::rand);
    return source;
}

int WCLevelSource::Draw(unsigned selector, int limit)
{
    if (_several)
        EnterCriticalSection(&_lock);
    int level = 0;
    while ((NextPair() & selector) == 0)
        ++level;
    if (_several)
        LeaveCriticalSection(&_lock);
    return level < limit ? level : limit;
}

unsigned WCLevelSource::NextPair()
{
    std::uint32_t pairs = _pairs.load(std::memory_order_relaxed);
    if (pairs == kNoPairs)
        pairs = (static_cast<std::uint32_t>(_random()) & kSevenPairs) | (kSevenPairs + 1);
    _pairs.store(pairs >> 2, std::memory_order_relaxed);
    return pairs & 3;
}

} // namespace qx
