#include "stacks/frame_text.h"

#include "core/debug_line.h"
#include "core/forever.h"
#include "module/module_paths.h"
#include "stacks/frame_variables.h"

#include <wchar.h>

#include <cstdarg>

namespace qx
{
namespace
{

constexpr std::size_t kLongestShownText = 256;
constexpr std::size_t kLineSize = 4096;

const char* NameOf(const DBGStackTraceItem& item)
{
    return item.fullName[0] ? item.fullName : item.name[0] ? item.name : item.symbol;
}

String SourceSuffix(const DBGStackTraceItem& item)
{
    return item.file[0] ? String(String::kFormatted, L"  (%hs, line %d)", item.file, static_cast<int>(item.line))
                        : String();
}

// Copies a text that a parameter points to, as far as its memory can be read.
template <class Character>
void ReadText(std::uint64_t address, Character (&text)[kLongestShownText])
{
    std::size_t length = 0;
    while (length + 1 < kLongestShownText &&
           ReadMemory(address + length * sizeof(Character), &text[length], sizeof(Character)) && text[length] != 0)
        ++length;
    text[length] = 0;
}

void PrintParameter(const DBGParameter& parameter, clsDebugOutput& output)
{
    String line(String::kFormatted, L"        %s(%hs)=", parameter.isLocal ? L"local" : L"param", parameter.name);
    const std::uint64_t number = parameter.value.number;
    switch (parameter.kind)
    {
    case kHex64:
    case kPointer:
        line += String(String::kFormatted, L"0x%016I64x", number);
        break;
    case kInt32:
        line += String(String::kFormatted, L"%d", static_cast<std::int32_t>(number));
        break;
    case kInt64:
        line += String(String::kFormatted, L"%I64d", static_cast<std::int64_t>(number));
        break;
    case kReal:
        line += String(String::kFormatted, L"%g", parameter.value.real);
        break;
    case kNarrowText:
    {
        char text[kLongestShownText];
        ReadText(number, text);
        String shown;
        shown.Assign(text);
        line += shown;
        break;
    }
    case kWideText:
    case kBstrText:
    {
        wchar_t text[kLongestShownText];
        ReadText(number, text);
        line += text;
        break;
    }
    default:
        line += String(String::kFormatted, L"0x%08x", static_cast<std::uint32_t>(number));
    }
    output.Print(L"%s", line.Text());
}

void PrintAddressOnly(const DBGStackTraceItem& item, clsDebugOutput& output)
{
    const char* const name = NameOf(item);
    const String suffix = SourceSuffix(item);
    if (*name && item.displacement != 0)
        output.Print(L"   CALL [0x%016I64x] %hs!%hs + 0x%016I64x %s", item.address, item.module, name,
            item.displacement, suffix.Text());
    else if (*name)
        output.Print(L"   CALL [0x%016I64x] %hs!%hs %s", item.address, item.module, name, suffix.Text());
    else
        output.Print(L"   CALL [0x%016I64x] %hs!0x%016I64x %s", item.address, item.module,
            item.address - item.moduleBase, suffix.Text());
}

} // namespace

clsDebugOutput_qvx_debug& clsDebugOutput_qvx_debug::Instance()
{
    static clsDebugOutput_qvx_debug& output = MakeForever<clsDebugOutput_qvx_debug>();
    return output;
}

void clsDebugOutput_qvx_debug::Print(const wchar_t* format, ...)
{
    if (!UtilIsDebugActive())
        return;
    wchar_t line[kLineSize];
    va_list arguments;
    va_start(arguments, format);
    _vsnwprintf(line, kLineSize - 1, format, arguments);
    va_end(arguments);
    line[kLineSize - 1] = 0;
    DebugLine(L"%s", line);
}

void PrintFrame(const DBGStackTraceItem& item, clsDebugOutput& output)
{
    if (item.size != sizeof item)
        return;
    if (item.addressOnly != 0)
        return PrintAddressOnly(item, output);
    const char* const name = NameOf(item);
    const String suffix = SourceSuffix(item);
    if (*name)
        output.Print(L"[0x%016I64x] %hs!%hs + 0x%016I64x %s\n", item.address, item.module, name, item.displacement,
            suffix.Text());
    else
        output.Print(L"[0x%016I64x] %hs!+0x%016I64x %s\n", item.address, item.module, item.address - item.moduleBase,
            suffix.Text());
    for (int index = 0; index < item.parameterCount && index < kMostParameters; ++index)
        PrintParameter(item.parameters[index], output);
}

void FormatFrame(
    std::uint64_t address, wchar_t (&buffer)[kFrameTextSize], unsigned detail, clsDBGHELP& session, bool isExact)
{
    DBGStackTraceItem item;
    session.Describe(item, address, isExact, 0, detail);
    String module;
    module.Assign(item.module);
    module = String(FileNameOf(module.View()));
    // Finds the module by the address of the instruction, because a return address may be past the end of its module.
    const std::uint64_t inside = isExact ? address : address - 1;
    MEMORY_BASIC_INFORMATION region{};
    if ((module.IsEmpty() || item.moduleBase == 0) &&
        VirtualQuery(reinterpret_cast<const void*>(inside), &region, sizeof region) != 0 && region.AllocationBase)
    {
        item.moduleBase = reinterpret_cast<std::uint64_t>(region.AllocationBase);
        if (module.IsEmpty())
            module = String(FileNameOf(ModulePath(static_cast<HMODULE>(region.AllocationBase)).View()));
    }
    const char* const name = item.name[0] ? item.name : item.symbol;
    const String suffix = SourceSuffix(item);
    if (*name)
        _snwprintf(buffer, kFrameTextSize - 1, L"[0x%08I64x] %s!%hs + %#I64x %s\n", address, module.Text(), name,
            item.displacement, suffix.Text());
    else
        _snwprintf(buffer, kFrameTextSize - 1, L"[0x%08I64x] %s!+%#I64x %s\n", address, module.Text(),
            address - item.moduleBase, suffix.Text());
    buffer[kFrameTextSize - 1] = 0;
}

} // namespace qx
