// Reading all entries and streams of an arbitrary compound file must end, and must not return more than the file
// contains.
#include "storage/compound_file.h"

#include <cstdlib>
#include <mutex>
#include <string>

#include <stdio.h>
#include <sys/mman.h>
#include <unistd.h>

using qxplatform::CompoundFile;
using qxplatform::Element;
using qxplatform::ElementType;
using qxplatform::SectorChain;

namespace
{

constexpr std::uint32_t kMostEntries = 200;

void ReadStream(CompoundFile& file, const Element& stream, std::size_t size)
{
    if (file.SizeOf(stream) > size)
        std::abort();
    SectorChain chain(stream.start);
    std::uint8_t block[3000];
    std::uint64_t position = 0;
    while (position < file.SizeOf(stream))
    {
        const bool isMini = stream.size < CompoundFile::kMiniCutoff;
        const std::size_t read = file.Read(chain, isMini, position, block, sizeof block);
        if (read > sizeof block)
            std::abort();
        if (read == 0)
            return;
        position += read;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const int descriptor = memfd_create("compound file", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    if (ftruncate(descriptor, 0) != 0 || pwrite(descriptor, data, size, 0) != static_cast<ssize_t>(size))
        std::abort();
    const std::u16string name(path.begin(), path.end());
    HRESULT failure = S_OK;
    const auto file =
        CompoundFile::Open(reinterpret_cast<const WCHAR*>(name.c_str()), FILE_SHARE_READ | FILE_SHARE_WRITE, failure);
    if (file == nullptr)
        return 0;
    const std::lock_guard lock(file->Lock());
    for (std::uint32_t index = 0; index < kMostEntries; ++index)
    {
        const std::optional<Element> element = file->ElementAt(index);
        if (!element)
            continue;
        if (element->type == ElementType::Stream)
            ReadStream(*file, *element, size);
        const std::optional<std::uint32_t> found = file->Find(CompoundFile::kRoot, element->Name(), element->type);
        if (found && !file->ElementAt(*found))
            std::abort();
    }
    return 0;
}
