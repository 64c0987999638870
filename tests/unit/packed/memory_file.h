// File objects in memory for the tests of packed text.
#pragma once

#include "files/file.h"

#include <windows.h>

#include <combaseapi.h>

#include <cstdint>
#include <string>
#include <vector>

namespace qxtest
{

inline IStream* NewMemoryStream()
{
    IStream* stream = nullptr;
    CreateStreamOnHGlobal(nullptr, TRUE, &stream);
    return stream;
}

// A file object over a stream in memory that owns it.
class MemoryFile : public qx::clsFileRWTempStream
{
public:
    MemoryFile() : clsFileRWTempStream(NewMemoryStream()) {}

    explicit MemoryFile(const std::string& bytes) : MemoryFile()
    {
        Write(bytes.data(), bytes.size());
        Seek(0);
    }

    using clsFile::Read;
    using clsFile::Seek;
    using clsFile::Write;

    std::string Bytes()
    {
        std::string bytes(static_cast<std::size_t>(GetSize()), '\0');
        Seek(0);
        bytes.resize(Read(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
        return bytes;
    }
};

} // namespace qxtest
