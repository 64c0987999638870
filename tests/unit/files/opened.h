// Opens files in the two ways that nearly all tests need.
#pragma once

#include "files/file.h"

#include <cstdint>

namespace qxtest
{

class Reader : public qx::clsFile
{
public:
    explicit Reader(const qx::String& path, qx::FileShare share = qx::FileShare::Read)
        : clsFile(path, qx::FileAccess::Read, qx::FileDisposition::OpenExisting, share, qx::kFileData)
    {
    }
};

class Writer : public qx::clsFileRW
{
public:
    explicit Writer(const qx::String& path, qx::FileDisposition disposition = qx::FileDisposition::OpenExisting,
        std::uint32_t flags = qx::kFileData)
        : clsFileRW(path, qx::FileAccess::ReadWrite, disposition, qx::FileShare::None, flags)
    {
    }
};

} // namespace qxtest
