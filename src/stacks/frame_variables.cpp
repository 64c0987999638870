#include "stacks/frame_variables.h"

#include "core/critical_section.h"
#include "core/forever.h"

#include <iterator>
#include <set>
#include <string>

namespace qx
{
namespace
{

constexpr ULONG kFrameRegister = 22;
constexpr ULONG kTagData = 7;
constexpr ULONG kTagStructure = 11;
constexpr ULONG kTagPointer = 14;

constexpr unsigned kBaseChar = 2;
constexpr unsigned kBaseWideChar = 3;
constexpr unsigned kBaseInt = 6;
constexpr unsigned kBaseFloat = 8;
constexpr unsigned kBaseBstr = 30;

constexpr std::uint64_t kLowestPointer = 0x10000;

// The texts that records point to. They are few, and live as long as the library.
class TextPool
{
public:
    const wchar_t* Wide(const String& text)
    {
        const clsCriticalSectionLock lock(_lock);
        return _wide.insert(text).first->Text();
    }

    static TextPool& Instance()
    {
        static TextPool& pool = MakeForever<TextPool>();
        return pool;
    }

private:
    clsCriticalSection _lock;
    std::set<String> _wide;
};

const wchar_t* BaseTypeName(unsigned type)
{
    switch (type)
    {
    case 1:
        return L"Void";
    case kBaseChar:
        return L"Char";
    case kBaseWideChar:
        return L"WChar";
    case kBaseInt:
        return L"Int";
    case 7:
        return L"UInt";
    case kBaseFloat:
        return L"Float";
    case 9:
        return L"BCD";
    case 10:
        return L"Bool";
    case 13:
        return L"Long";
    case 14:
        return L"ULong";
    case 25:
        return L"Currency";
    case 26:
        return L"Date";
    case 27:
        return L"Variant";
    case 28:
        return L"Complex";
    case 29:
        return L"Bit";
    case kBaseBstr:
        return L"BSTR";
    case 31:
        return L"Hresult";
    default:
        return L"unknown type";
    }
}

void SetText(DBGParameter& parameter, const String& text)
{
    parameter.kind = kWideText;
    parameter.value.wide = TextPool::Instance().Wide(text);
}

void SetSizeText(DBGParameter& parameter, std::uint64_t size)
{
    SetText(parameter, String(String::kFormatted, L"@@@<param of size %d, possibly struct>", static_cast<int>(size)));
}

struct PointerTexts
{
    ParameterKind kind;
    const char* narrow; // the message for narrow text
    const wchar_t* wide;
};

// Stores a pointer to text, or a message from `invalid` if the pointer isn't valid.
void SetTextPointer(DBGParameter& parameter, std::uint64_t pointer, bool isValid, const PointerTexts& invalid)
{
    parameter.kind = invalid.kind;
    parameter.value.number = pointer;
    if (isValid)
        return;
    if (invalid.kind == kNarrowText)
        parameter.value.narrow = invalid.narrow;
    else
        parameter.value.wide = invalid.wide;
}

template <class Value>
Value ReadValue(std::uint64_t address)
{
    Value value{};
    return ReadMemory(address, &value, sizeof value) ? value : Value{};
}

void DecodeFour(DBGParameter& parameter, std::uint64_t address, unsigned baseType)
{
    const auto value = ReadValue<std::uint32_t>(address);
    const bool isPointer = (value >> 16) != 0;
    switch (baseType)
    {
    case kBaseChar:
        return SetTextPointer(
            parameter, value, isPointer, {kNarrowText, "<invalid Char pointer, NULL HIword>", nullptr});
    case kBaseWideChar:
        return SetTextPointer(
            parameter, value, isPointer, {kWideText, nullptr, L"<invalid WChar pointer, NULL HIword>"});
    case kBaseBstr:
        return SetTextPointer(
            parameter, value, isPointer, {kBstrText, nullptr, L"<invalid BSTR pointer, NULL HIword>"});
    case kBaseFloat:
        parameter.kind = kReal;
        parameter.value.real = ReadValue<float>(address);
        return;
    default:
        parameter.kind = baseType == kBaseInt ? kInt32 : kHex32;
        parameter.value.number = value;
    }
}

void DecodeEight(DBGParameter& parameter, std::uint64_t address, unsigned baseType)
{
    const auto value = ReadValue<std::uint64_t>(address);
    const bool isPointer = value >= kLowestPointer;
    switch (baseType)
    {
    case kBaseChar:
        return SetTextPointer(
            parameter, value, isPointer, {kNarrowText, "<invalid 64 bit Char pointer, NULL HIword>", nullptr});
    case kBaseWideChar:
        return SetTextPointer(
            parameter, value, isPointer, {kWideText, nullptr, L"<invalid 64 bit WChar pointer, NULL HIword>"});
    case kBaseBstr:
        return SetTextPointer(
            parameter, value, isPointer, {kBstrText, nullptr, L"<invalid 64 bit BSTR pointer, NULL HIword>"});
    case kBaseFloat:
        parameter.kind = kReal;
        parameter.value.real = ReadValue<double>(address);
        return;
    default:
        parameter.kind = baseType == kBaseInt ? kInt64 : kHex64;
        parameter.value.number = value;
    }
}

// Returns true for the sizes of numbers. Structures of these sizes aren't shown, because they could be mistaken for
// numbers.
bool HasSizeOfValue(const SYMBOL_INFO& symbol)
{
    return symbol.Size <= sizeof(std::uint64_t) && (symbol.Size & (symbol.Size - 1)) == 0;
}

} // namespace

bool ReadMemory(std::uint64_t address, void* target, std::size_t size)
{
    SIZE_T read = 0;
    return ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void*>(address), target, size, &read) &&
           read == size;
}

void DecodeValue(DBGParameter& parameter, std::uint64_t address, std::uint64_t size, unsigned baseType)
{
    switch (size)
    {
    case 0:
        return DecodeFour(parameter, address, baseType == kBaseInt || baseType == kBaseFloat ? baseType : 0);
    case 1:
        parameter.kind = kHex32;
        parameter.value.number = ReadValue<std::uint8_t>(address);
        return;
    case 2:
        parameter.kind = kHex32;
        parameter.value.number = ReadValue<std::uint16_t>(address);
        return;
    case 4:
        return DecodeFour(parameter, address, baseType);
    case 8:
        return DecodeEight(parameter, address, baseType);
    default:
        return SetSizeText(parameter, size);
    }
}

void AddFrameWords(DBGStackTraceItem& item, ParameterSet unknown, const DWORD64 (&words)[4])
{
    const DWORD64* word = std::begin(words);
    for (int index = 0; index < item.parameterCount && word != std::end(words); ++index, unknown >>= 1)
    {
        DBGParameter& parameter = item.parameters[index];
        if (parameter.isLocal)
            continue;
        if ((unknown & 1) != 0)
        {
            const bool isWhole = parameter.kind == kHex64 || parameter.kind == kReal;
            parameter.value.number = isWhole ? *word : static_cast<std::uint32_t>(*word);
        }
        ++word;
    }
}

ParameterSet VariableReader::Read()
{
    for (const bool isLocalPass : {false, true})
    {
        _isLocalPass = isLocalPass;
        _session.p_SymEnumSymbols(_session._process, 0, nullptr, OnSymbol, this);
    }
    return _unknown;
}

BOOL CALLBACK VariableReader::OnSymbol(PSYMBOL_INFO symbol, ULONG, PVOID self)
{
    static_cast<VariableReader*>(self)->Add(*symbol);
    return TRUE;
}

void VariableReader::Add(const SYMBOL_INFO& symbol)
{
    const bool isParameter = (symbol.Flags & SYMFLAG_PARAMETER) != 0;
    const bool isWanted = _isLocalPass ? (symbol.Flags & SYMFLAG_LOCAL) != 0 && !isParameter : isParameter;
    if (symbol.Tag != kTagData || _item.parameterCount >= kMostParameters || !isWanted)
        return;
    DBGParameter& parameter = _item.parameters[_item.parameterCount++];
    parameter = {};
    parameter.isLocal = _isLocalPass;
    CopyToField(symbol.Name, parameter.name);
    std::uint64_t address = symbol.Address;
    if ((symbol.Flags & SYMFLAG_REGREL) != 0)
        address = symbol.Register == kFrameRegister ? _frameBase + symbol.Address : 0;
    if (address == 0)
    {
        _unknown |= ParameterSet{1} << (_item.parameterCount - 1);
        return;
    }
    if (SetValue(parameter, symbol, address))
        return;
    parameter = {};
    --_item.parameterCount;
}

// Returns false for a type that can't be shown.
bool VariableReader::SetValue(DBGParameter& parameter, const SYMBOL_INFO& symbol, std::uint64_t address)
{
    ULONG count = 0;
    ULONG baseType = 0;
    ULONG inner = 0;
    ULONG tag = 0;
    const bool hasCount = Query(symbol, symbol.TypeIndex, TI_GET_COUNT, count);
    const bool hasBaseType =
        Query(symbol, symbol.TypeIndex, TI_GET_BASETYPE, baseType) ||
        (Query(symbol, symbol.TypeIndex, TI_GET_TYPE, inner) && Query(symbol, inner, TI_GET_BASETYPE, baseType));
    Query(symbol, symbol.TypeIndex, TI_GET_SYMTAG, tag);
    if (hasBaseType && hasCount)
        SetText(parameter,
            String(String::kFormatted, L"@@@<array[%d] of %s>", static_cast<int>(count), BaseTypeName(baseType)));
    else if (hasBaseType)
        DecodeValue(parameter, address, symbol.Size, baseType);
    else if (tag == kTagPointer)
    {
        parameter.kind = kPointer;
        parameter.value.number = ReadValue<std::uint64_t>(address);
    }
    else if (tag == kTagStructure && !HasSizeOfValue(symbol))
        SetSizeText(parameter, symbol.Size);
    else
        return false;
    return true;
}

bool VariableReader::Query(const SYMBOL_INFO& symbol, ULONG type, IMAGEHLP_SYMBOL_TYPE_INFO what, ULONG& result)
{
    return _session.p_SymGetTypeInfo.IsThere() &&
           _session.p_SymGetTypeInfo(_session._process, symbol.ModBase, type, what, &result) != FALSE;
}

} // namespace qx
