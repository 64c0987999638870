// A stream in memory, with its contents as a string of bytes.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <objbase.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qxtest
{

class MemoryStream
{
public:
    explicit MemoryStream(std::string_view bytes = {})
    {
        EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, &_stream), S_OK);
        _stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
        Seek(0);
    }
    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;
    ~MemoryStream() { _stream->Release(); }

    operator IStream*() const { return _stream; }
    void Seek(std::int64_t position) const { _stream->Seek({.QuadPart = position}, STREAM_SEEK_SET, nullptr); }
    // Returns the bytes from the current position on.
    std::string Rest() const
    {
        STATSTG record = {};
        _stream->Stat(&record, STATFLAG_NONAME);
        std::string bytes(static_cast<std::size_t>(record.cbSize.QuadPart), '\0');
        ULONG read = 0;
        _stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read);
        return bytes.substr(0, read);
    }
    std::string Bytes() const
    {
        Seek(0);
        return Rest();
    }
    ULONG References() const
    {
        _stream->AddRef();
        return _stream->Release();
    }

private:
    IStream* _stream = nullptr;
};

} // namespace qxtest
