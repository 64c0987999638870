// Reading arbitrary bytes as a shortcut must not read outside of them, and must not return texts longer than they can
// contain.
#include "shell/link_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::optional<qxplatform::LinkTarget> target = qxplatform::ParseLink({data, size});
    if (target && target->local.size() + target->share.size() > 4 * size)
        std::abort();
    return 0;
}
