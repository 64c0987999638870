// A stream in memory that misbehaves on demand.
#pragma once

#include <windows.h>

#include <objidl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace qxtest
{

// Lives on the stack of a test. `references` shows whether all references were released.
class FakeStream : public IStream
{
public:
    std::string bytes;
    std::uint64_t position = 0;
    ULONG references = 1;

    ULONG readLimit = ~ULONG{0};        // per call
    ULONG writeLimit = ~ULONG{0};       // per call
    std::size_t room = ~std::size_t{0}; // total size of the stream
    HRESULT writeResult = S_OK;         // returned once the limit is reached
    bool setSizeMovesPosition = false;
    HRESULT setSizeResult = S_OK;
    HRESULT lockResult = S_OK;
    HRESULT seekResult = S_OK;
    HRESULT commitResult = S_OK;
    int locks = 0;
    int lockTries = 0;
    int commits = 0;
    std::int64_t sizeSet = -1;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* read) override
    {
        const std::size_t there = position < bytes.size() ? bytes.size() - position : 0;
        const auto part = static_cast<ULONG>(std::min<std::size_t>(std::min(count, readLimit), there));
        memcpy(buffer, bytes.data() + position, part);
        position += part;
        if (read != nullptr)
            *read = part;
        return part == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG count, ULONG* written) override
    {
        const auto part = static_cast<ULONG>(
            std::min<std::size_t>(std::min(count, writeLimit), room - std::min<std::size_t>(position, room)));
        if (bytes.size() < position + part)
            bytes.resize(position + part);
        memcpy(bytes.data() + position, buffer, part);
        position += part;
        if (written != nullptr)
            *written = part;
        return part == count ? S_OK : writeResult;
    }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER distance, DWORD origin, ULARGE_INTEGER* reached) override
    {
        if (FAILED(seekResult))
            return seekResult;
        const std::uint64_t from = origin == STREAM_SEEK_SET ? 0 : origin == STREAM_SEEK_CUR ? position : bytes.size();
        position = from + static_cast<std::uint64_t>(distance.QuadPart);
        if (reached != nullptr)
            reached->QuadPart = position;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override
    {
        sizeSet = static_cast<std::int64_t>(size.QuadPart);
        if (FAILED(setSizeResult))
            return setSizeResult;
        bytes.resize(size.QuadPart);
        if (setSizeMovesPosition)
            position = size.QuadPart;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE CopyTo(
        IStream*, ULARGE_INTEGER count, ULARGE_INTEGER* read, ULARGE_INTEGER* written) override
    {
        read->QuadPart = count.QuadPart;
        written->QuadPart = count.QuadPart / 2;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override
    {
        ++commits;
        return commitResult;
    }
    HRESULT STDMETHODCALLTYPE Revert() override { return STG_E_REVERTED; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        ++lockTries;
        if (SUCCEEDED(lockResult))
            ++locks;
        return lockResult;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        --locks;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* record, DWORD) override
    {
        *record = {};
        record->cbSize.QuadPart = bytes.size();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return STG_E_UNIMPLEMENTEDFUNCTION; }
};

} // namespace qxtest
