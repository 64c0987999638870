#include "resources/loaded_images.h"

#include <map>
#include <mutex>

#include <link.h>

#include "base/fail.h"
#include "base/forever.h"
#include "base/fork_gate.h"
#include "modules/loaded_modules.h"
#include "resources/resource_notes.h"

namespace qxplatform
{

namespace
{

using Images = std::map<HMODULE, std::shared_ptr<const ResourceImage>>;

// The dynamic linker's counts of loads and unloads. Cached results are valid as long as neither changes.
struct Generation
{
    unsigned long long loads = 0;
    unsigned long long unloads = 0;

    bool operator==(const Generation&) const = default;
};

Generation PresentGeneration()
{
    Generation generation;
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* context)
        {
            *static_cast<Generation*>(context) = {info->dlpi_adds, info->dlpi_subs};
            return 1;
        },
        &generation);
    return generation;
}

using ImageBytes = std::vector<std::span<const std::byte>>;

int AddImagesOfModule(dl_phdr_info* info, std::size_t, void* context)
{
    for (int i = 0; i < info->dlpi_phnum; ++i)
    {
        const ElfW(Phdr)& segment = info->dlpi_phdr[i];
        if (segment.p_type != PT_NOTE)
            continue;
        const auto* const begin = reinterpret_cast<const std::byte*>(info->dlpi_addr + segment.p_vaddr);
        AddResourceImages({begin, segment.p_memsz}, segment.p_align, *static_cast<ImageBytes*>(context));
    }
    return 0;
}

Images FindImages()
{
    ImageBytes found;
    dl_iterate_phdr(AddImagesOfModule, &found);
    std::map<HMODULE, ImageBytes> byModule;
    for (const std::span<const std::byte> bytes : found)
        if (const std::optional<Module> module = ModuleAt(bytes.data()))
            byModule[module->handle].push_back(bytes);
    Images images;
    for (const auto& [module, files] : byModule)
        images.emplace(module, std::make_shared<ResourceImage>(files));
    return images;
}

// Returns the resources of all loaded modules.
Images PresentImages()
{
    struct Cache
    {
        Mutex mutex;
        Generation generation;
        Images images;
    };
    static constinit Forever<Cache> theCache;
    Cache& cache = theCache.Get();
    const ForkHold hold; // the loader's lock must be free in a child
    const Generation present = PresentGeneration();
    const std::lock_guard guard(cache.mutex);
    if (!(cache.generation == present))
    {
        cache.images = FindImages();
        cache.generation = present;
    }
    return cache.images;
}

} // namespace

std::shared_ptr<const ResourceImage> ImageOf(HMODULE module)
{
    static constinit Forever<HMODULE> theProgram;
    const HMODULE program = theProgram.Get([] { return ModuleOf(nullptr).value_or(Module()).handle; });
    const Images images = PresentImages();
    const auto found = images.find(module != nullptr ? module : program);
    if (found != images.end())
        return found->second;
    Fail(ERROR_RESOURCE_DATA_NOT_FOUND);
    return nullptr;
}

HRSRC HandleOf(const Resource& resource)
{
    return reinterpret_cast<HRSRC>(const_cast<std::byte*>(resource.header));
}

std::optional<Resource> ResourceOf(HRSRC handle)
{
    for (const auto& [module, image] : PresentImages())
        for (const Resource& resource : image->All())
            if (HandleOf(resource) == handle)
                return resource;
    Fail(ERROR_INVALID_HANDLE);
    return std::nullopt;
}

} // namespace qxplatform
