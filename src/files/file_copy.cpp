#include "files/file.h"

#include "core/debug_line.h"
#include "files/global_lock.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace qx
{

namespace
{

constexpr std::int64_t kLargestBuffer = 0x6400000;

// Allocates the largest available buffer, starting with `size` bytes and halving it on failure. Returns null if nothing
// can be allocated.
std::unique_ptr<clsGlobalLock> AllocateBuffer(std::int64_t& size)
{
    for (; size > 0; size /= 2)
    {
        auto buffer = std::make_unique<clsGlobalLock>(GMEM_MOVEABLE | GMEM_ZEROINIT, static_cast<std::size_t>(size));
        if (buffer->IsLocked())
        {
            return buffer;
        }
    }
    return nullptr;
}

} // namespace

void clsFile::Reserve(std::int64_t count)
{
    const std::int64_t position = Position();
    if (position < 0)
    {
        return;
    }
    if (_handle.IsValid())
    {
        if (MoveHandle(count, FILE_CURRENT))
        {
            SetEOF();
        }
    }
    else
    {
        ULARGE_INTEGER size = {};
        size.QuadPart = static_cast<ULONGLONG>(position + count);
        if (FAILED(_stream->SetSize(size)))
        {
            DebugLine(L"ERR: Stream->SetSize(%I64d+%I64d) failed!", position, count);
        }
        if (Position() == position)
        {
            return;
        }
        DebugLine(L"WRN: need to correct Outlook stream implementation error, cross your fingers to proceed");
    }
    Seek(position);
}

// The buffer is allocated before the first write, so that this object doesn't change if memory runs out.
bool clsFile::CopyFrom(clsFile& source)
{
    const std::int64_t size = source.GetSize();
    if (!source.IsOpen() || size == 0)
    {
        SetEOF();
        return true;
    }
    const std::int64_t position = source.Position();
    if (size < 0 || position < 0)
    {
        return false;
    }
    const std::int64_t remaining = std::max<std::int64_t>(size - position, 0);
    if (remaining == 0)
    {
        Reserve(0);
        return true;
    }

    std::int64_t bufferSize = std::min(remaining, kLargestBuffer);
    const std::unique_ptr<clsGlobalLock> buffer = AllocateBuffer(bufferSize);
    if (buffer == nullptr)
    {
        return false;
    }
    Reserve(remaining);
    if (!CopyBytes(source, buffer->Get(), bufferSize, remaining))
    {
        return false;
    }
    SetEOF();
    return true;
}

bool clsFile::CopyBytes(clsFile& source, void* buffer, std::int64_t bufferSize, std::int64_t count)
{
    while (count > 0)
    {
        const auto part = static_cast<std::uint32_t>(std::min(bufferSize, count));
        if (source.Read(buffer, part) != part || Write(buffer, part) != part)
        {
            return false;
        }
        count -= part;
    }
    return true;
}

} // namespace qx
