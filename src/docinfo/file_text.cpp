#include "docinfo/file_text.h"

#include "core/text/text_buffer.h"

#include <algorithm>
#include <cstring>

namespace qx
{
namespace
{

constexpr std::size_t kTextStep = 4096;

} // namespace

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

std::string ReadToZero(FileWindow& file, std::uint64_t begin, std::size_t most, std::size_t unit)
{
    std::string bytes;
    while (bytes.size() < most)
    {
        const std::size_t done = bytes.size();
        const std::size_t step = std::min(most - done, kTextStep);
        bytes.resize(done + step);
        const std::size_t read = file.Read(begin + done, bytes.data() + done, step);
        bytes.resize(done + read);
        for (std::size_t i = done; i + unit <= bytes.size(); i += unit)
            if (std::all_of(&bytes[i], &bytes[i] + unit, [](char c) { return c == 0; }))
            {
                bytes.resize(i);
                return bytes;
            }
        if (read < step)
            break;
    }
    return bytes;
}

String WideTextOfBytes(std::string_view bytes)
{
    TextBuffer text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return String(std::wstring_view(text));
}

} // namespace qx
