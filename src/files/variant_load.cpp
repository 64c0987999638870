#include "files/variant_file.h"

#include "files/file.h"
#include "files/variant_layout.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <deque>
#include <utility>
#include <vector>

namespace qx
{

namespace
{

// Reads in blocks, so that small values don't need a call each. The destructor moves the file back to the end of the
// consumed data.
class clsVariantReader
{
public:
    explicit clsVariantReader(clsFile& file) : _file(file) {}
    clsVariantReader(const clsVariantReader&) = delete;
    clsVariantReader& operator=(const clsVariantReader&) = delete;
    ~clsVariantReader()
    {
        if (_next == _end)
            return;
        LARGE_INTEGER back;
        back.QuadPart = -static_cast<LONGLONG>(_end - _next);
        _file.Seek(back, STREAM_SEEK_CUR, nullptr);
    }

    // Returns false at the end of the source.
    bool Read(clsVariant& value, int depth)
    {
        VARIANT plain{};
        if (!Take(&plain.vt, sizeof plain.vt))
            return false;
        if (plain.vt & VT_ARRAY)
            ReadArray(value, depth);
        else if (plain.vt == VT_BSTR)
            value = clsVariant(ReadText());
        else
            value = HasPlace(plain.vt) && Take(&plain.llVal, VariantPayloadSize(plain.vt)) ? clsVariant::Adopt(plain)
                                                                                           : clsVariant();
        return true;
    }

private:
    static constexpr std::uint32_t kBlock = 4096;

    static bool HasPlace(VARTYPE type) { return type == VT_EMPTY || type == VT_NULL || VariantPayloadSize(type) != 0; }

    void ReadArray(clsVariant& value, int depth)
    {
        value = clsVariant();
        if (depth == kMaxVariantDepth)
            return;
        std::deque<clsVariant> elements;
        for (LONG count = ReadCount(depth); count > 0; --count)
        {
            // Each element takes at least two bytes, which keeps memory use proportional to the size of the source.
            clsVariant element;
            if (!Read(element, depth + 1))
                break;
            elements.push_back(std::move(element));
        }
        value = clsVariant::ArrayOf(std::move(elements));
    }

    LONG ReadCount(int depth)
    {
        clsVariant count;
        Read(count, depth + 1);
        VARIANT number{};
        const HRESULT result = VariantChangeType(&number, const_cast<VARIANT*>(&count.Get()), 0, VT_I4);
        return SUCCEEDED(result) ? number.lVal : 0;
    }

    // Collects the characters first, because a String copies itself each time it grows.
    String ReadText()
    {
        std::vector<wchar_t> units;
        wchar_t unit;
        while (Take(&unit, sizeof unit) && unit != L'\0')
            units.push_back(unit);
        String text;
        text.Append(units.data(), units.size());
        return text;
    }

    // Copies exactly `count` bytes. If the source has fewer, returns false, and the rest of the source is consumed.
    bool Take(void* target, std::size_t count)
    {
        auto* bytes = static_cast<char*>(target);
        while (count != 0)
        {
            if (_next == _end && !Refill())
                return false;
            const std::size_t part = std::min(count, static_cast<std::size_t>(_end - _next));
            std::memcpy(bytes, _next, part);
            _next += part;
            bytes += part;
            count -= part;
        }
        return true;
    }

    bool Refill()
    {
        _next = _block;
        _end = _block + _file.Read(_block, kBlock);
        return _next != _end;
    }

    clsFile& _file;
    char _block[kBlock];
    const char* _next = _block;
    const char* _end = _block;
};

} // namespace

void Load(clsVariant& value, clsFile& file)
{
    clsVariantReader(file).Read(value, 0);
}

} // namespace qx
