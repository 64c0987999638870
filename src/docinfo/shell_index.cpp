#include "docinfo/shell_index.h"

#include "files/auto_release.h"
#include "module/late_libraries.h"

#include <cmath>
#include <cstdint>

namespace qx
{
namespace
{

constexpr int kBestEffort = 64;
constexpr IID kPropertyStoreId = {0x886D8EEB, 0x8CF2, 0x4446, {0x8D, 0x02, 0xCD, 0xBA, 0x1D, 0xBD, 0xCF, 0x99}};
constexpr IID kShellItemId = {0x7E9FB0D3, 0x919F, 0x4307, {0xAB, 0x2E, 0x9B, 0x18, 0x60, 0x31, 0x0C, 0x93}};
constexpr GUID kSummaryFormat = {0xF29F85E0, 0x4FF9, 0x1068, {0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9}};

struct TextKey
{
    DWORD id;
    clsVariant clsDocu::*field;
};

struct DateKey
{
    DWORD id;
    SYSTEMTIME clsDocu::*field;
};

// All texts are read before the dates.
constexpr TextKey kTextKeys[] = {
    {2, &clsDocu::Title}, {4, &clsDocu::Author}, {5, &clsDocu::Keywords}, {3, &clsDocu::Subject}};
constexpr DateKey kDateKeys[] = {{12, &clsDocu::Created}, {13, &clsDocu::LastSaved}};

constexpr int kWrongType = -1;

// A value from a property store, freed at the end of the scope.
class PropertyValue
{
public:
    PropertyValue(IPropertyStore& store, DWORD id, ShellIndex::Clear clear) : _clear(clear)
    {
        const PROPERTYKEY key = {kSummaryFormat, id};
        _isThere = SUCCEEDED(store.GetValue(key, &_value));
    }
    PropertyValue(const PropertyValue&) = delete;
    PropertyValue& operator=(const PropertyValue&) = delete;
    ~PropertyValue()
    {
        if (_isThere && _clear != nullptr)
            _clear(&_value);
    }

    bool IsThere() const { return _isThere; }
    bool IsEmptyOr(VARTYPE type) const { return _value.vt == VT_EMPTY || _value.vt == type; }
    const PROPVARIANT& Get() const { return _value; }

private:
    PROPVARIANT _value = {};
    ShellIndex::Clear _clear;
    bool _isThere = false;
};

// Converts a value to a variant, which is empty on failure.
VARIANT VariantOf(const PropertyValue& value, const ShellIndex& index)
{
    VARIANT variant{};
    if (index.toVariant == nullptr || FAILED(index.toVariant(value.Get(), &variant)))
        return VARIANT{};
    return variant;
}

// Variants have dates with milliseconds, but the system's conversion rounds to seconds.
bool FileTimeOfVariantDate(double date, FILETIME& time)
{
    constexpr double kMillisecondsPerDay = 86'400'000;
    const double fraction = std::fabs(date - std::trunc(date));
    const auto milliseconds = static_cast<std::int64_t>(std::llround(fraction * kMillisecondsPerDay)) % 1000;
    SYSTEMTIME parts = {};
    const double rest = static_cast<double>(milliseconds) / kMillisecondsPerDay;
    if (!VariantTimeToSystemTime(date < 0 ? date + rest : date - rest, &parts))
        return false;
    parts.wMilliseconds = static_cast<WORD>(milliseconds);
    return SystemTimeToFileTime(&parts, &time) != FALSE;
}

// How a store's dates are read: converted to variants if the store was opened by name, as file times if it was opened
// from an item.
enum class DateForm
{
    Variant,
    FileTime
};

bool DateOfProperty(const PropertyValue& value, const ShellIndex& index, DateForm form, FILETIME& time)
{
    if (form == DateForm::FileTime)
    {
        time = value.Get().filetime;
        return true;
    }
    const VARIANT date = VariantOf(value, index);
    return date.vt == VT_DATE && FileTimeOfVariantDate(date.date, time);
}

// Returns the number of texts, or kWrongType.
int ReadTexts(clsDocu& record, IPropertyStore& store, const ShellIndex& index)
{
    int count = 0;
    for (const TextKey& key : kTextKeys)
    {
        const PropertyValue value(store, key.id, index.clear);
        if (!value.IsThere())
            continue;
        if (!value.IsEmptyOr(VT_LPSTR))
            return kWrongType;
        clsVariant& field = record.*key.field;
        field = clsVariant::Adopt(VariantOf(value, index));
        if (field.Type() != VT_EMPTY && field.Type() != VT_ERROR)
            ++count;
    }
    return count;
}

bool ReadDates(clsDocu& record, IPropertyStore& store, const ShellIndex& index, DateForm form)
{
    for (const DateKey& key : kDateKeys)
    {
        const PropertyValue value(store, key.id, index.clear);
        if (!value.IsThere())
            continue;
        if (!value.IsEmptyOr(VT_FILETIME))
            return false;
        if (value.Get().vt == VT_EMPTY)
            continue;
        FILETIME time = {};
        if (!DateOfProperty(value, index, form, time) || !FileTimeToSystemTime(&time, &(record.*key.field)))
            record.*key.field = kNoTime;
    }
    return true;
}

// Returns the number of texts (0 if there is no store), or kWrongType.
int ReadStore(clsDocu& record, const String& path, ShellIndex::OpenStore open, const ShellIndex& index, DateForm form)
{
    clsAutoRelease<IPropertyStore*> store;
    if (open == nullptr || FAILED(open(path.Text(), store.Receive())) || !store)
        return 0;
    const int count = ReadTexts(record, *store, index);
    return count != kWrongType && ReadDates(record, *store, index, form) ? count : kWrongType;
}

HRESULT OpenStoreByName(const wchar_t* path, IPropertyStore** store)
{
    return Shell32().p_SHGetPropertyStoreFromParsingName(
        path, nullptr, kBestEffort, kPropertyStoreId, reinterpret_cast<void**>(store));
}

HRESULT OpenStoreOfItem(const wchar_t* path, IPropertyStore** store)
{
    clsAutoRelease<IShellItem2*> item;
    const HRESULT result =
        Shell32().p_SHCreateItemFromParsingName(path, nullptr, kShellItemId, reinterpret_cast<void**>(item.Receive()));
    if (FAILED(result))
        return result;
    return item->GetPropertyStore(
        static_cast<GETPROPERTYSTOREFLAGS>(kBestEffort), kPropertyStoreId, reinterpret_cast<void**>(store));
}

// A library that is loaded as long as this object exists.
class LoadedLibrary
{
public:
    explicit LoadedLibrary(const wchar_t* name) : _module(LoadLibraryW(name)) {}
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;
    ~LoadedLibrary()
    {
        if (_module != nullptr)
            FreeLibrary(_module);
    }

    bool IsLoaded() const { return _module != nullptr; }

    template <class Function>
    Function Find(const char* name) const
    {
        return _module != nullptr ? reinterpret_cast<Function>(GetProcAddress(_module, name)) : nullptr;
    }

private:
    HMODULE _module;
};

} // namespace

bool HasShellIndex()
{
    return Shell32().p_SHGetPropertyStoreFromParsingName.IsThere() || Shell32().p_SHCreateItemFromParsingName.IsThere();
}

int ReadShellIndex(clsDocu& record, const String& path)
{
    if (!HasShellIndex())
        return -1;
    const LoadedLibrary properties(L"propsys.dll"), values(L"ole32.dll");
    ShellIndex index;
    index.toVariant = properties.Find<ShellIndex::ToVariant>("PropVariantToVariant");
    index.clear = values.Find<ShellIndex::Clear>("PropVariantClear");
    if (properties.IsLoaded() && Shell32().p_SHGetPropertyStoreFromParsingName.IsThere())
        index.openByName = OpenStoreByName;
    if (Shell32().p_SHCreateItemFromParsingName.IsThere())
        index.openItem = OpenStoreOfItem;
    return ReadShellIndex(record, path, index);
}

int ReadShellIndex(clsDocu& record, const String& path, const ShellIndex& index)
{
    int count = ReadStore(record, path, index.openByName, index, DateForm::Variant);
    if (count == 0)
        count = ReadStore(record, path, index.openItem, index, DateForm::FileTime);
    return count > 0 ? 0 : -1;
}

} // namespace qx
