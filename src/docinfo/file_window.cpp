#include "docinfo/file_window.h"

#include <algorithm>
#include <cstring>

namespace qx
{

bool ReadFirstText(FileWindow& file, String& text)
{
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(file.Size(), FileWindow::kCapacity));
    const std::uint8_t* const bytes = file.At(0, count);
    if (bytes == nullptr)
        return false;
    text = TextOfBytes(bytes, count);
    return true;
}

String TextOfBytes(const std::uint8_t* bytes, std::size_t count)
{
    String text;
    if (count == 0)
        return text;
    const auto* const end = static_cast<const std::uint8_t*>(std::memchr(bytes, 0, count));
    text.Assign(
        reinterpret_cast<const char*>(bytes), 0, end != nullptr ? static_cast<std::size_t>(end - bytes) : count);
    return text;
}

} // namespace qx
