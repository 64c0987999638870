#include "files/variant_file.h"

#include "core/debug_line.h"
#include "core/developer_run.h"
#include "files/file.h"
#include "files/variant_layout.h"

#include <cstdint>
#include <string>

namespace qx
{

namespace
{

// Collects small pieces into a few large writes.
class clsVariantWriter
{
public:
    explicit clsVariantWriter(clsFile& file) : _file(file) {}

    void Write(const clsVariant& value, int depth)
    {
        if (value.Type() & VT_BYREF)
            return Write(clsVariant(value.Get()), depth);
        if (value.Type() & VT_ARRAY)
            return WriteArray(value, depth);
        const VARIANT& plain = value.Get();
        Put(&plain.vt, sizeof plain.vt);
        if (plain.vt == VT_BSTR)
            WriteText(plain.bstrVal);
        else
            Put(&plain.llVal, VariantPayloadSize(plain.vt));
    }

    bool Finish()
    {
        Flush();
        return _isWhole && !_isFull;
    }

private:
    static constexpr std::size_t kBlock = std::size_t{1} << 16;

    // Writes a text up to its first zero, because the reader stops there.
    void WriteText(BSTR text)
    {
        const std::wstring_view whole(text != nullptr ? text : L"", SysStringLen(text));
        const std::wstring_view written = whole.substr(0, whole.find(L'\0'));
        Put(written.data(), written.size() * sizeof(wchar_t));
        constexpr wchar_t kEnd = L'\0';
        Put(&kEnd, sizeof kEnd);
    }

    void WriteArray(const clsVariant& array, int depth)
    {
        if (depth == kMaxVariantDepth)
        {
            if (UtilIsDeveloperRun())
                DebugLine(L"WRN: clsVariant: array nested too deep, not written");
            _isWhole = false;
            return Write(clsVariant(), depth);
        }
        const VARTYPE type = array.Type();
        Put(&type, sizeof type);
        const ULONG count = CountOf(array.Get().parray);
        VARIANT countValue{};
        countValue.vt = VT_I4;
        countValue.ulVal = count;
        Write(clsVariant(countValue), depth);
        for (ULONG i = 0; i < count && !_isFull; ++i)
            Write(GetElement(array, {i}), depth + 1);
    }

    static ULONG CountOf(SAFEARRAY* array)
    {
        LONG first = 0;
        LONG last = -1;
        if (FAILED(SafeArrayGetLBound(array, 1, &first)) || FAILED(SafeArrayGetUBound(array, 1, &last)))
            return 0;
        return static_cast<ULONG>(LONGLONG{last} - first + 1);
    }

    void Put(const void* bytes, std::size_t count)
    {
        _block.append(static_cast<const char*>(bytes), count);
        if (_block.size() >= kBlock)
            Flush();
    }

    void Flush()
    {
        if (!_block.empty() && !_isFull)
            _isFull = _file.Write(_block.data(), _block.size()) != static_cast<std::int64_t>(_block.size());
        _block.clear();
    }

    clsFile& _file;
    std::string _block;
    bool _isWhole = true; // false if something was left out
    bool _isFull = false; // a write failed
};

} // namespace

bool Save(const clsVariant& value, clsFile& file)
{
    clsVariantWriter writer(file);
    writer.Write(value, 0);
    return writer.Finish();
}

} // namespace qx
