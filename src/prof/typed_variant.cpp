#include "prof/typed_variant.h"

#include "core/variant/variant.h"
#include "files/auto_release.h"
#include "files/file.h"
#include "files/packed_text.h"
#include "files/variant_file.h"

#include <objbase.h>

#include <cstdint>

namespace qx
{

namespace
{

constexpr std::wstring_view kPrefix = L"var://";
constexpr std::int64_t kSmallestCompressed = 101;

class clsMemoryFile : public clsFileRW
{
public:
    clsMemoryFile()
    {
        clsAutoRelease<IStream*> stream;
        CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive());
        AttachStream(stream.Get());
    }
};

} // namespace

String VariantToText(const VARIANT& value)
{
    clsMemoryFile file;
    Save(clsVariant(value), file);
    String text(kPrefix);
    text.Append(PackToString(file, file.GetSize() >= kSmallestCompressed, String::EmptyString()));
    return text;
}

void VariantFromText(std::wstring_view text, VARIANT& value)
{
    if (!text.empty() && !text.starts_with(kPrefix))
    {
        clsVariant(String(text)).CopyTo(value);
        return;
    }
    clsMemoryFile file;
    if (text.empty() || !UnpackFromString(file, text.substr(kPrefix.size()), String::EmptyString()))
    {
        VariantChangeType(&value, &value, 0, VT_EMPTY);
        return;
    }
    clsVariant loaded;
    Load(loaded, file);
    loaded.MoveTo(value);
}

} // namespace qx
