#include "files/allocation_count.h"

#include "core/text/string.h"

#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>

namespace qx
{

void ReportNegativeObjectCount(const std::type_info& type, std::int32_t count)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> readable(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    const String line(String::kFormatted,
        L"%hs: object count=%d: it seems you must create objects to have none... ;) See comment above\n",
        readable != nullptr ? readable.get() : type.name(), count);
    OutputDebugStringW(line.Text());
}

} // namespace qx
