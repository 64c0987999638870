#include "module/version_block.h"

#include <windows.h>

#include <cstddef>
#include <vector>

namespace qx
{
namespace
{

// Maximum length of the path of a text, including its terminator.
constexpr std::size_t kLongestPath = 81;

struct Translation
{
    WORD language;
    WORD codePage;
};

// The header of each block, which precedes its value.
struct BlockHead
{
    WORD length;
    WORD valueLength;
    WORD type;
    wchar_t key[1];
};

template <class Value>
const Value* Query(const void* block, const wchar_t* path, UINT& length)
{
    void* value = nullptr;
    length = 0;
    return VerQueryValueW(block, path, &value, &length) ? static_cast<const Value*>(value) : nullptr;
}

// Returns true if `size` bytes at `address` are within the block.
bool IsInBlock(const void* block, const void* address, std::size_t size)
{
    const auto* const begin = static_cast<const std::byte*>(block);
    const auto* const end = begin + static_cast<const BlockHead*>(block)->length;
    const auto* const at = static_cast<const std::byte*>(address);
    return at >= begin && at <= end && size <= static_cast<std::size_t>(end - at);
}

// Returns the key of the first block of texts, or an empty text if the key doesn't start like a language number.
String FirstLanguage(const void* block)
{
    UINT length = 0;
    const auto* const child = Query<BlockHead>(block, L"\\StringFileInfo\\", length);
    if (!child || !IsInBlock(block, child, sizeof(BlockHead)) || !IsInBlock(block, child, child->length) ||
        child->length < sizeof(BlockHead) || child->key[0] >= L'A')
        return String();
    return String(child->key, 0, (child->length - offsetof(BlockHead, key)) / sizeof(wchar_t));
}

String PathOfTexts(const void* block)
{
    UINT length = 0;
    const auto* const translation = Query<Translation>(block, L"\\VarFileInfo\\Translation", length);
    String path;
    if (translation && length >= sizeof(Translation))
    {
        path.Format(L"\\StringFileInfo\\%04x%04x\\", translation->language, translation->codePage);
        return path;
    }
    const String language = FirstLanguage(block);
    if (!language.IsEmpty())
        path.Format(L"\\StringFileInfo\\%s\\", language.Text());
    return path;
}

std::vector<std::byte> ReadBlockOfFile(const wchar_t* path)
{
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(path, &ignored);
    if (size == 0 || size > 0x7FFFFFFF)
        return {};
    // The second half is working space that the system needs when it converts texts.
    std::vector<std::byte> block(std::size_t{size} * 2);
    return GetFileVersionInfoW(path, 0, size * 2, block.data()) ? block : std::vector<std::byte>();
}

} // namespace

clsVersionTexts::clsVersionTexts(const void* block) : _block(block), _path(PathOfTexts(block)) {}

String clsVersionTexts::Get(const wchar_t* key) const
{
    const String path = _path + key;
    if (_path.IsEmpty() || path.Length() >= kLongestPath)
        return String();
    UINT length = 0;
    const auto* const text = Query<wchar_t>(_block, path, length);
    return text ? String(text, 0, length) : String();
}

String GetFileVersionValue(const wchar_t* path, const wchar_t* key)
{
    const std::vector<std::byte> block = ReadBlockOfFile(path);
    return block.empty() ? String() : clsVersionTexts(block.data()).Get(key);
}

String GetFileVersionText(const wchar_t* path, String* description, String* company)
{
    const std::vector<std::byte> block = ReadBlockOfFile(path);
    for (String* const text : {description, company})
        if (text)
            text->Empty();
    if (block.empty())
        return String();
    const clsVersionTexts texts(block.data());
    if (description)
        *description = texts.Get(L"FileDescription");
    if (company)
        *company = texts.Get(L"CompanyName");
    String text = texts.Get(L"FileVersion");
    const String build = texts.Get(L"Build");
    if (!build.IsEmpty())
        text += L" " + build;
    return text;
}

} // namespace qx
