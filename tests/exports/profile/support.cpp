#include "exports/profile/support.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>

namespace profiletest
{

Wide::Wide(std::string_view utf8)
{
    for (size_t i = 0; i < utf8.size();)
    {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        unsigned character = length == 1 ? lead : lead & (0x7Fu >> length);
        for (size_t k = 1; k < length; ++k)
            character = character << 6 | (static_cast<unsigned char>(utf8[i + k]) & 0x3Fu);
        if (character > 0xFFFF)
        {
            _text.push_back(static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10)));
            character = 0xDC00 + (character & 0x3FF);
        }
        _text.push_back(static_cast<wchar_t>(character));
        i += length;
    }
    _text.push_back(0);
}

Wide& Wide::operator+=(std::wstring_view text)
{
    _text.insert(_text.end() - 1, text.begin(), text.end());
    return *this;
}

std::string Utf8(std::wstring_view text)
{
    std::string result;
    const auto append = [&](unsigned byte)
    {
        result.push_back(static_cast<char>(byte));
    };
    for (size_t i = 0; i < text.size(); ++i)
    {
        unsigned c = static_cast<uint16_t>(text[i]);
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size())
            c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<uint16_t>(text[++i]) - 0xDC00u);
        if (c < 0x80)
            append(c);
        else
        {
            const unsigned more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
            append((0xFF00u >> (more + 1) & 0xFF) | c >> (6 * more));
            for (unsigned k = more; k-- > 0;)
                append(0x80 | (c >> (6 * k) & 0x3F));
        }
    }
    return result;
}

std::string Utf16File(std::wstring_view text, bool isBigEndian)
{
    std::string bytes;
    const auto append = [&](unsigned c)
    {
        bytes.push_back(static_cast<char>(isBigEndian ? c >> 8 : c));
        bytes.push_back(static_cast<char>(isBigEndian ? c : c >> 8));
    };
    append(0xFEFF);
    for (const wchar_t c : text)
        append(static_cast<uint16_t>(c));
    return bytes;
}

std::string Tree(HPROFJOB job, HPROFLIST list)
{
    std::string text;
    ProfEnumW(
        job, list,
        [](HPROFJOB owner, const wchar_t* name, const wchar_t* value, HPROFLIST child, void* context) -> int32_t
        {
            auto& out = *static_cast<std::string*>(context);
            if (child != nullptr)
                out += "[" + Utf8(name) + "]{" + Tree(owner, child) + "}";
            else
                out += Utf8(name) + "=" + Utf8(value) + ";";
            return 1;
        },
        &text);
    return text;
}

std::string Value(HPROFJOB job, const wchar_t* path, HPROFLIST list)
{
    const int32_t length = ProfGetStringLengthW(job, list, path);
    if (length < 0)
        return "(none)";
    std::vector<wchar_t> buffer(static_cast<size_t>(length) + 1);
    ProfGetStringW(job, list, path, buffer.data(), length + 1, nullptr);
    return Utf8({buffer.data(), static_cast<size_t>(length)});
}

TempFolder::TempFolder()
{
    static std::atomic<int> number{0};
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    _folder = std::filesystem::temp_directory_path() /
              ("qxut-profile-" + std::to_string(now) + "-" + std::to_string(++number));
    std::filesystem::create_directories(_folder);
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(_folder, ignored);
}

std::string TempFolder::Path(std::string_view name) const
{
    return (_folder / name).string();
}

std::string TempFolder::Make(std::string_view name, std::string_view bytes) const
{
    const std::string path = Path(name);
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path;
}

std::string BytesOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace profiletest
