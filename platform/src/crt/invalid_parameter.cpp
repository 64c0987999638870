#include "invalid_parameter.h"

#include <stdlib.h>
#include <wchar.h>

#include <atomic>

namespace
{

std::atomic<_invalid_parameter_handler> theHandler = nullptr;

} // namespace

namespace qxplatform
{

errno_t RefuseParameter(errno_t error)
{
    if (const _invalid_parameter_handler handler = theHandler.load(std::memory_order_acquire))
        handler(nullptr, nullptr, nullptr, 0, 0);
    errno = error;
    return error;
}

} // namespace qxplatform

_invalid_parameter_handler _set_invalid_parameter_handler(_invalid_parameter_handler handler) noexcept
{
    return theHandler.exchange(handler, std::memory_order_acq_rel);
}
