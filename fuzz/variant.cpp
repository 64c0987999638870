// Arbitrary bytes as a variant: a variant that can be read must be writable, readable again, and convertible to text
// and to a number.
#include "files/auto_release.h"
#include "files/file.h"
#include "files/variant_file.h"

#include <windows.h>

#include <objbase.h>

#include <cstdint>
#include <cstdlib>
#include <string>

using namespace qx;

namespace
{

void Require(bool condition)
{
    if (!condition)
    {
        abort();
    }
}

class MemoryFile : public clsFileRW
{
public:
    MemoryFile()
    {
        clsAutoRelease<IStream*> stream;
        Require(SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive())));
        Require(AttachStream(stream.Get()) == 0);
    }
};

std::string Saved(const clsVariant& value)
{
    MemoryFile file;
    Require(Save(value, file));
    std::string bytes(static_cast<std::size_t>(file.GetSize()), '\0');
    file.clsFile::Seek(std::int64_t{0});
    Require(file.clsFile::Read(bytes.data(), static_cast<std::uint32_t>(bytes.size())) == bytes.size());
    return bytes;
}

// Returns the value and the position after it.
clsVariant Loaded(const void* bytes, std::size_t size, std::int64_t& end)
{
    MemoryFile file;
    Require(file.clsFile::Write(bytes, std::uint64_t{size}) == static_cast<std::int64_t>(size));
    file.clsFile::Seek(std::int64_t{0});
    clsVariant value;
    Load(value, file);
    end = file.Tell();
    return value;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::int64_t end = 0;
    const clsVariant value = Loaded(data, size, end);
    Require(end >= 0 && end <= static_cast<std::int64_t>(size));
    if (value.Type() & VT_ARRAY)
    {
        Require(value.Get().parray->rgsabound[0].cElements <= size / 2);
    }
    ToString(value);
    ToDouble(value);

    const std::string once = Saved(value);
    const clsVariant again = Loaded(once.data(), once.size(), end);
    Require(end == static_cast<std::int64_t>(once.size()));
    Require(Saved(again) == once);
    return 0;
}
