// File objects in memory for the tests of packed text.
#pragma once

#include "files/file.h"
#include "support/memory_stream.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace qxtest
{

// A file object over a stream in memory, positioned at the beginning.
class MemoryFile : public qx::clsFileRW
{
public:
    explicit MemoryFile(std::string_view bytes = {}) { AttachStream(MemoryStream(bytes)); }

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
