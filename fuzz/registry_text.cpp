// The text form of the registry: contents that can be read must be read back unchanged after writing.
#include "registry/reg_text.h"

#include <cstdint>
#include <cstdlib>

using namespace qxplatform;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::u16string_view kRoot = u"HKEY_CURRENT_USER";
    const RegistryText first = ReadRegistryText({reinterpret_cast<const char*>(data), size}, kRoot);
    const std::string written = WriteRegistryText(first.tree, kRoot);
    const RegistryText second = ReadRegistryText(written, kRoot);
    if (second.damaged || WriteRegistryText(second.tree, kRoot) != written)
        std::abort();
    return 0;
}
