#include "modules/loaded_modules.h"

#include "base/fail.h"
#include "base/fork_gate.h"
#include "base/text.h"
#include "files/path.h"
#include "modules/image_list.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include <unistd.h>

namespace qxplatform
{
namespace
{

// System libraries whose functions, as far as they are used here, are implemented in the layer.
constexpr std::u16string_view kSystemLibraries[] = {
    u"advapi32",
    u"combase",
    u"kernel32",
    u"kernelbase",
    u"ntdll",
    u"ole32",
    u"oleaut32",
    u"psapi",
    u"shlwapi",
    u"user32",
    u"version",
    u"winmm",
    u"xmllite",
};

std::u16string_view FileNameOf(std::u16string_view path)
{
    return path.substr(path.find_last_of(u"/\\:") + 1);
}

bool HasFolder(std::u16string_view name)
{
    return name.size() != FileNameOf(name).size();
}

bool EndsWithoutCase(std::u16string_view text, std::u16string_view end)
{
    return text.size() >= end.size() && EqualWithoutCase(text.substr(text.size() - end.size()), end);
}

std::u16string_view WithoutExtension(std::u16string_view name)
{
    constexpr std::u16string_view kExtension = u".dll";
    if (EndsWithoutCase(name, kExtension))
        name.remove_suffix(kExtension.size());
    return name;
}

// Returns true if the file has this name. libname.so.3 also counts as libname.so.
bool IsFileOf(std::u16string_view file, std::u16string_view name)
{
    return EqualWithoutCase(file, name) ||
           (EndsWithoutCase(name, u".so") && file.size() > name.size() && file[name.size()] == u'.' &&
               EqualWithoutCase(file.substr(0, name.size()), name));
}

} // namespace

std::vector<Module> LoadedModules()
{
    const ForkHold hold; // the loader's lock must be free in a child
    std::vector<Module> modules;
    const std::size_t pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    for (LoadedImage& image : ListLoadedImages())
        if (!image.path.empty())
            modules.push_back({reinterpret_cast<HMODULE>(image.begin), std::move(image.path),
                (image.size + pageSize - 1) / pageSize * pageSize});
    return modules;
}

std::optional<Module> ModuleOf(HMODULE handle)
{
    for (Module& module : LoadedModules())
        if (handle == nullptr || module.handle == handle)
            return std::move(module);
    Fail(ERROR_MOD_NOT_FOUND);
    return std::nullopt;
}

std::optional<Module> ModuleAt(const void* address)
{
    const auto value = reinterpret_cast<std::uintptr_t>(address);
    for (Module& module : LoadedModules())
        if (value - reinterpret_cast<std::uintptr_t>(module.handle) < module.size)
            return std::move(module);
    return std::nullopt;
}

std::optional<Module> FindModule(std::u16string_view name)
{
    if (IsSystemLibrary(name))
        return Layer();
    const bool isPath = HasFolder(name);
    std::vector<std::u16string> wanted = FileNamesOf(name);
    if (IsDebugHelp(name))
        wanted.push_back(u"libqxdbghelp.so");
    for (Module& module : LoadedModules())
    {
        const std::u16string path = FromNative(module.path);
        const std::u16string_view file = isPath ? path : FileNameOf(path);
        if (std::any_of(
                wanted.begin(), wanted.end(), [file](const auto& candidate) { return IsFileOf(file, candidate); }))
            return std::move(module);
    }
    return std::nullopt;
}

bool IsSystemLibrary(std::u16string_view name)
{
    const std::u16string_view stem = WithoutExtension(name);
    return std::any_of(std::begin(kSystemLibraries), std::end(kSystemLibraries),
        [stem](std::u16string_view library) { return EqualWithoutCase(stem, library); });
}

bool IsDebugHelp(std::u16string_view name)
{
    return EqualWithoutCase(WithoutExtension(name), u"dbghelp");
}

bool IsLayerOrDebugHelp(const Module& module)
{
    const std::string layer = Layer().path;
    const std::string folder = layer.substr(0, layer.rfind('/') + 1);
    return module.path == layer ||
           (module.path.starts_with(folder) && module.path.substr(folder.size()).starts_with("libqxdbghelp.so"));
}

std::string DebugHelpPath()
{
    // libqxplatform.so.23 and libqxdbghelp.so.23 are installed together, and have the same version.
    constexpr std::string_view kLayerName = "libqxplatform";
    std::string path = Layer().path;
    const std::size_t name = path.rfind('/') + 1;
    if (path.compare(name, kLayerName.size(), kLayerName) == 0)
        path.replace(name, kLayerName.size(), "libqxdbghelp");
    return path;
}

Module Layer()
{
    static const std::optional<Module> layer = ModuleAt(reinterpret_cast<const void*>(&Layer));
    return layer.value_or(Module());
}

std::vector<std::u16string> FileNamesOf(std::u16string_view name)
{
    std::u16string folder(name.substr(0, name.size() - FileNameOf(name).size()));
    if (!folder.empty())
        folder = FromNative(ToFullNative(Wide(folder)).text) + u'/';
    const std::u16string file(FileNameOf(name));
    return {folder + file, folder + u"lib" + std::u16string(WithoutExtension(file)) + u".so"};
}

} // namespace qxplatform
