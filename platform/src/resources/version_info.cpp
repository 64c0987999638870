// Version blocks of files, and their values.

#include <winbase.h>
#include <winnt.h>
#include <winuser.h>
#include <winver.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

#include <fcntl.h>
#include <unistd.h>

#include "base/descriptor.h"
#include "base/fail.h"
#include "base/text.h"
#include "files/path.h"
#include "resources/resource_image.h"
#include "resources/resource_language.h"
#include "resources/resource_notes.h"
#include "resources/version_block.h"

using namespace qxplatform;

namespace
{

constexpr WORD kVersionName = 1;

bool ReadAll(int file, std::uint64_t place, void* buffer, std::size_t size)
{
    auto* next = static_cast<char*>(buffer);
    while (size > 0)
    {
        const ssize_t count = pread(file, next, size, static_cast<off_t>(place));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        next += count;
        place += static_cast<std::uint64_t>(count);
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

std::optional<std::vector<std::byte>> VersionBlockIn(const std::vector<NoteSegment>& segments)
{
    std::vector<std::span<const std::byte>> images;
    for (const NoteSegment& segment : segments)
        AddResourceImages(segment.bytes, segment.alignment, images);
    const ResourceImage image(images);
    const ResourceKey type = ResourceKey::FromCaller(RT_VERSION);
    const Resource* const found = ChooseLanguage(image.OfName(type, {{}, kVersionName}), LANG_NEUTRAL);
    if (found == nullptr)
    {
        Fail(image.All().empty() ? ERROR_RESOURCE_DATA_NOT_FOUND : ERROR_RESOURCE_TYPE_NOT_FOUND);
        return std::nullopt;
    }
    return std::vector<std::byte>(found->data.begin(), found->data.end());
}

// Returns the version block of a program or library. Empty with a last error if it has none.
std::optional<std::vector<std::byte>> VersionBlockOf(LPCWSTR fileName)
{
    if (fileName == nullptr)
    {
        Fail(ERROR_INVALID_PARAMETER);
        return std::nullopt;
    }
    const NativePath path = ToNative(fileName);
    if (path.IsEmpty())
        return std::nullopt;
    const Descriptor file(open(path.text.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file)
    {
        Fail(PathError(errno, path.text));
        return std::nullopt;
    }
    return VersionBlockIn(ReadNoteSegments([&file](std::uint64_t place, void* buffer, std::size_t size)
        { return ReadAll(file.Get(), place, buffer, size); }));
}

} // namespace

DWORD WINAPI GetFileVersionInfoSizeW(LPCWSTR lptstrFilename, LPDWORD lpdwHandle)
{
    if (lpdwHandle != nullptr)
        *lpdwHandle = 0;
    const auto block = VersionBlockOf(lptstrFilename);
    return block ? static_cast<DWORD>(block->size()) : 0;
}

// Copies the version block. If it doesn't fit, it is truncated and its own length is adjusted, so that none of its
// values is outside the buffer.
BOOL WINAPI GetFileVersionInfoW(LPCWSTR lptstrFilename, DWORD, DWORD dwLen, LPVOID lpData)
{
    if (lpData == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    const auto block = VersionBlockOf(lptstrFilename);
    if (!block)
        return FALSE;
    const std::size_t size = std::min<std::size_t>(block->size(), dwLen);
    std::memcpy(lpData, block->data(), size);
    const auto length = static_cast<WORD>(VersionBlockSize(lpData, size));
    if (size >= sizeof length)
        std::memcpy(lpData, &length, sizeof length);
    return TRUE;
}

BOOL WINAPI VerQueryValueW(LPCVOID pBlock, LPCWSTR lpSubBlock, LPVOID* lplpBuffer, PUINT puLen)
{
    if (pBlock == nullptr || lpSubBlock == nullptr || lplpBuffer == nullptr || puLen == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    *puLen = 0;
    const auto* const begin = static_cast<const std::byte*>(pBlock);
    const std::size_t size = VersionBlockSize(pBlock, sizeof(WORD) + 0xffff);
    const auto value = FindVersionValue({begin, size}, View(lpSubBlock));
    if (!value)
        return Fail(ERROR_RESOURCE_TYPE_NOT_FOUND);
    *lplpBuffer = const_cast<std::byte*>(value->bytes);
    *puLen = value->length;
    return TRUE;
}
