// Packed text for memory blocks, streams and global memory.
#include <qxut23/convert.h>

#include "exports/guard.h"
#include "files/file.h"
#include "files/packed_text.h"

#include <windows.h>

#include <combaseapi.h>
#include <objidl.h>
#include <oleauto.h>

#include <algorithm>

using namespace qx;

namespace
{

// An empty holder if no stream can be made.
clsAutoRelease<IStream*> StreamOnMemory(HGLOBAL memory, BOOL deleteOnRelease)
{
    clsAutoRelease<IStream*> stream;
    CreateStreamOnHGlobal(memory, deleteOnRelease, stream.Receive());
    return stream;
}

String PackBlob(const void* data, uint32_t size, bool compress)
{
    if (size == 0)
        return String();
    clsFileRWTempStream source(StreamOnMemory(nullptr, TRUE).Detach());
    source.clsFile::Write(data, size);
    return PackToString(source, compress, String());
}

String PackStream(IStream* stream, bool compress)
{
    clsFileRO source(stream);
    return PackToString(source, compress, String());
}

// How the functions with a text buffer deliver.
int32_t ToBuffer(const String& text, QXWCHAR* buffer, uint32_t bufferChars)
{
    const size_t needed = text.Length() + 1;
    if (!buffer || bufferChars == 0)
        return static_cast<int32_t>(needed);
    const size_t copied = std::min<size_t>(text.Length(), bufferChars - 1);
    std::copy_n(text.Text(), copied, buffer);
    buffer[copied] = 0;
    return bufferChars < needed ? QXUT_CONVERT_CUT : 0;
}

int32_t ToBSTR(const String& text, QXWCHAR** target)
{
    return text.ToBSTR(target) ? 0 : QXUT_CONVERT_FAILED;
}

} // namespace

int32_t UtilConvertBLOBToString(
    const void* data, uint32_t size, QXWCHAR* buffer, uint32_t bufferChars, int32_t compress)
{
    if (!data && size != 0)
        return QXUT_CONVERT_NULL;
    return Guarded(
        QXUT_CONVERT_FAILED, [&] { return ToBuffer(PackBlob(data, size, compress != 0), buffer, bufferChars); });
}

int32_t UtilConvertBLOBToBSTR(const void* data, uint32_t size, QXWCHAR** text, int32_t compress)
{
    if (!text)
        return QXUT_CONVERT_FAILED;
    if (!data && size != 0)
        return QXUT_CONVERT_NULL;
    return Guarded(QXUT_CONVERT_FAILED, [&] { return ToBSTR(PackBlob(data, size, compress != 0), text); });
}

int32_t UtilConvertStringToBLOB(const QXWCHAR* text, void* data, uint32_t size)
{
    if (!text)
        return QXUT_CONVERT_NULL;
    return Guarded(QXUT_CONVERT_FAILED,
        [&]
        {
            clsFileRWTempStream target(StreamOnMemory(nullptr, TRUE).Detach());
            UnpackFromString(target, String(text), String());
            const auto unpacked = static_cast<uint32_t>(std::max<int64_t>(target.GetSize(), 0));
            if (data && unpacked > size)
                return QXUT_CONVERT_FAILED;
            if (data)
                target.clsFile::Read(data, unpacked);
            return static_cast<int32_t>(unpacked);
        });
}

int32_t UtilConvertStreamToString(IStream* stream, QXWCHAR* buffer, uint32_t bufferChars, int32_t compress)
{
    if (!stream)
        return QXUT_CONVERT_NULL;
    return Guarded(
        QXUT_CONVERT_FAILED, [&] { return ToBuffer(PackStream(stream, compress != 0), buffer, bufferChars); });
}

int32_t UtilConvertStreamToBSTR(IStream* stream, QXWCHAR** text, int32_t compress)
{
    if (!text)
        return QXUT_CONVERT_FAILED;
    if (!stream)
        return QXUT_CONVERT_NULL;
    return Guarded(QXUT_CONVERT_FAILED, [&] { return ToBSTR(PackStream(stream, compress != 0), text); });
}

int32_t UtilConvertStringToStream(const QXWCHAR* text, IStream* stream)
{
    if (!text || !stream)
        return QXUT_CONVERT_NULL;
    return Guarded(QXUT_CONVERT_FAILED,
        [&]
        {
            clsFileRW target(stream);
            UnpackFromString(target, String(text), String());
            return 0;
        });
}

int32_t UtilConvertHGLOBALToString(void* memory, QXWCHAR* buffer, uint32_t bufferChars, int32_t compress)
{
    return Guarded(QXUT_CONVERT_FAILED,
        [&]
        {
            // A null handle would make a new block.
            if (!memory)
                return QXUT_CONVERT_NULL;
            const auto stream = StreamOnMemory(memory, FALSE);
            return stream.Get() ? ToBuffer(PackStream(stream.Get(), compress != 0), buffer, bufferChars)
                                : QXUT_CONVERT_NULL;
        });
}

int32_t UtilConvertHGLOBALToBSTR(void* memory, QXWCHAR** text, int32_t compress)
{
    if (!text)
        return QXUT_CONVERT_FAILED;
    return Guarded(QXUT_CONVERT_FAILED,
        [&]
        {
            // A null handle would make a new block.
            if (!memory)
                return QXUT_CONVERT_NULL;
            const auto stream = StreamOnMemory(memory, FALSE);
            return stream.Get() ? ToBSTR(PackStream(stream.Get(), compress != 0), text) : QXUT_CONVERT_NULL;
        });
}

int32_t UtilConvertStringToHGLOBAL(const QXWCHAR* text, void** memory)
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
                UnpackFromString(target, String(text), String());
            }
            if (*memory)
                GlobalFree(*memory);
            *memory = nullptr;
            if (FAILED(GetHGlobalFromStream(stream.Get(), memory)))
                DebugLine(L"GetHGlobalFromStream() failed");
            return 0;
        });
}
