// Packed text for memory blocks, streams and global memory.
#include <qxut23/convert.h>

#include "core/debug_line.h"
#include "exports/guard.h"
#include "files/file.h"
#include "files/packed_text.h"

#include <windows.h>

#include <combaseapi.h>
#include <objidl.h>
#include <oleauto.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <optional>

using namespace qx;

namespace
{

// Returns an empty holder if the stream can't be created.
clsAutoRelease<IStream*> StreamOnMemory(HGLOBAL memory, BOOL deleteOnRelease)
{
    clsAutoRelease<IStream*> stream;
    CreateStreamOnHGlobal(memory, deleteOnRelease, stream.Receive());
    return stream;
}

PackedText PackStream(IStream* stream, bool compress)
{
    clsFileRO source(stream);
    return PackedText(source, compress, String());
}

// Writes the text to the caller's buffer, truncated if necessary. Without a buffer, returns the required size in
// characters, including the terminator.
std::int32_t ToBuffer(const PackedText& packed, QXWCHAR* buffer, std::uint32_t bufferChars)
{
    if (!packed.IsWhole())
        return QXUT_CONVERT_FAILED;
    const std::size_t length = packed.Length();
    if (!buffer || bufferChars == 0)
        return static_cast<std::int32_t>(length + 1);
    const std::size_t copied = std::min<std::size_t>(length, bufferChars - 1);
    if (copied == length)
        packed.WriteTo(buffer);
    else
    {
        const auto text = std::make_unique_for_overwrite<wchar_t[]>(length);
        packed.WriteTo(text.get());
        std::copy_n(text.get(), copied, buffer);
    }
    buffer[copied] = 0;
    return copied == length ? 0 : QXUT_CONVERT_CUT;
}

std::int32_t ToBSTR(const PackedText& packed, QXWCHAR** target)
{
    const std::size_t length = packed.Length();
    if (!packed.IsWhole() || length > UINT_MAX / sizeof(wchar_t) - 1)
        return QXUT_CONVERT_FAILED;
    const BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(length));
    if (!text)
        return QXUT_CONVERT_FAILED;
    packed.WriteTo(text);
    SysFreeString(*target);
    *target = text;
    return 0;
}

} // namespace

std::int32_t UtilConvertBLOBToString(
    const void* data, std::uint32_t size, QXWCHAR* buffer, std::uint32_t bufferChars, std::int32_t compress)
{
    if (!data && size != 0)
        return QXUT_CONVERT_NULL;
    return Guarded(QXUT_CONVERT_FAILED,
        [&] { return ToBuffer(PackedText(data, size, compress != 0, String()), buffer, bufferChars); });
}

std::int32_t UtilConvertBLOBToBSTR(const void* data, std::uint32_t size, QXWCHAR** text, std::int32_t compress)
{
    if (!text)
        return QXUT_CONVERT_FAILED;
    if (!data && size != 0)
        return QXUT_CONVERT_NULL;
    return Guarded(QXUT_CONVERT_FAILED, [&] { return ToBSTR(PackedText(data, size, compress != 0, String()), text); });
}

std::int32_t UtilConvertStringToBLOB(const QXWCHAR* text, void* data, std::uint32_t size)
{
    if (!text)
        return QXUT_CONVERT_NULL;
    return Guarded(QXUT_CONVERT_FAILED,
        [&]
        {
            if (!data)
                return static_cast<std::int32_t>(DataOfPackedText(text, String()).value_or(ByteBlock()).size());
            const std::optional<std::size_t> count = UnpackTo(static_cast<unsigned char*>(data), size, text);
            return count ? static_cast<std::int32_t>(*count) : QXUT_CONVERT_FAILED;
        });
}

std::int32_t UtilConvertStreamToString(
    IStream* stream, QXWCHAR* buffer, std::uint32_t bufferChars, std::int32_t compress)
{
    if (!stream)
        return QXUT_CONVERT_NULL;
    return Guarded(
        QXUT_CONVERT_FAILED, [&] { return ToBuffer(PackStream(stream, compress != 0), buffer, bufferChars); });
}

std::int32_t UtilConvertStreamToBSTR(IStream* stream, QXWCHAR** text, std::int32_t compress)
{
    if (!text)
        return QXUT_CONVERT_FAILED;
    if (!stream)
        return QXUT_CONVERT_NULL;
    return Guarded(QXUT_CONVERT_FAILED, [&] { return ToBSTR(PackStream(stream, compress != 0), text); });
}

std::int32_t UtilConvertStringToStream(const QXWCHAR* text, IStream* stream)
{
    if (!text || !stream)
        return QXUT_CONVERT_NULL;
    return Guarded(QXUT_CONVERT_FAILED,
        [&]
        {
            clsFileRW target(stream);
            UnpackFromString(target, text, String());
            return 0;
        });
}

std::int32_t UtilConvertHGLOBALToString(void* memory, QXWCHAR* buffer, std::uint32_t bufferChars, std::int32_t compress)
{
    return Guarded(QXUT_CONVERT_FAILED,
        [&]
        {
            // A null handle would create a new block.
            if (!memory)
                return QXUT_CONVERT_NULL;
            const auto stream = StreamOnMemory(memory, FALSE);
            return stream.Get() ? ToBuffer(PackStream(stream.Get(), compress != 0), buffer, bufferChars)
                                : QXUT_CONVERT_NULL;
        });
}

std::int32_t UtilConvertHGLOBALToBSTR(void* memory, QXWCHAR** text, std::int32_t compress)
{
    if (!text)
        return QXUT_CONVERT_FAILED;
    return Guarded(QXUT_CONVERT_FAILED,
        [&]
        {
            // A null handle would create a new block.
            if (!memory)
                return QXUT_CONVERT_NULL;
            const auto stream = StreamOnMemory(memory, FALSE);
            return stream.Get() ? ToBSTR(PackStream(stream.Get(), compress != 0), text) : QXUT_CONVERT_NULL;
        });
}

std::int32_t UtilConvertStringToHGLOBAL(const QXWCHAR* text, void** memory)
{
    if (!text || !memory)
        return QXUT_CONVERT_NULL;
    return Guarded(QXUT_CONVERT_FAILED,
        [&]
        {
            const auto stream = StreamOnMemory(nullptr, FALSE);
            if (!stream.Get())
                return QXUT_CONVERT_NULL;
            {
                clsFileRW target(stream.Get());
                UnpackFromString(target, text, String());
            }
            if (*memory)
                GlobalFree(*memory);
            *memory = nullptr;
            if (FAILED(GetHGlobalFromStream(stream.Get(), memory)))
                DebugLine(L"GetHGlobalFromStream() failed");
            return 0;
        });
}
