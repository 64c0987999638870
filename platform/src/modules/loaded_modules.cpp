#include "modules/loaded_modules.h"

#include "base/fail.h"
#include "base/text.h"
#include "files/path.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <iterator>

#include <link.h>
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
};

struct Image
{
    Module module;
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
};

std::string ProgramPath()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return length < 0 ? std::string() : std::string(path, static_cast<std::size_t>(length));
}

int AddImage(dl_phdr_info* info, std::size_t, void* images)
{
    std::uintptr_t begin = UINTPTR_MAX;
    std::uintptr_t end = 0;
    for (const ElfW(Phdr)* header = info->dlpi_phdr; header != info->dlpi_phdr + info->dlpi_phnum; ++header)
    {
        if (header->p_type != PT_LOAD)
            continue;
        begin = std::min<std::uintptr_t>(begin, info->dlpi_addr + header->p_vaddr);
        end = std::max<std::uintptr_t>(end, info->dlpi_addr + header->p_vaddr + header->p_memsz);
    }
    const std::uintptr_t pageMask = ~static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE) - 1);
    auto& list = *static_cast<std::vector<Image>*>(images);
    // The program is reported first and without a name.
    const std::string path = list.empty() ? ProgramPath() : info->dlpi_name;
    begin &= pageMask;
    end = (end + ~pageMask) & pageMask;
    if (begin < end && !path.empty())
        list.push_back({{reinterpret_cast<HMODULE>(begin), path, end - begin}, begin, end});
    return 0;
}

std::vector<Image> Images()
{
    std::vector<Image> images;
    dl_iterate_phdr(AddImage, &images);
    return images;
}

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

// libname.so.3 also counts as libname.so.
bool IsFileOf(std::u16string_view file, std::u16string_view name)
{
    return EqualWithoutCase(file, name) ||
           (EndsWithoutCase(name, u".so") && file.size() > name.size() && file[name.size()] == u'.' &&
               EqualWithoutCase(file.substr(0, name.size()), name));
}

} // namespace

std::vector<Module> LoadedModules()
{
    std::vector<Module> modules;
    for (Image& image : Images())
        modules.push_back(std::move(image.module));
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
    for (Image& image : Images())
        if (value >= image.begin && value < image.end)
            return std::move(image.module);
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
