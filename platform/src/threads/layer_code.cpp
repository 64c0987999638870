#include "threads/layer_code.h"

#include "base/forever.h"
#include "base/fork_gate.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <string_view>
#include <vector>

#include <link.h>

namespace qxplatform
{
namespace
{

struct Range
{
    std::uintptr_t begin;
    std::uintptr_t end;
};

struct CodeList
{
    std::vector<Range> ranges;
    unsigned long long loads = 0; // number of modules loaded so far
};

// A list is never freed, because a handler may be reading it. A new one is created only if modules have been loaded in
// the meantime.
std::atomic<const CodeList*> codeList = nullptr;

// Returns the string table, or null for the kernel's own module, in whose dynamic section the loader doesn't relocate
// addresses.
const char* StringsOf(const dl_phdr_info& module, const ElfW(Dyn) * entries)
{
    for (; entries->d_tag != DT_NULL; ++entries)
        if (entries->d_tag == DT_STRTAB && entries->d_un.d_ptr >= module.dlpi_addr)
            return reinterpret_cast<const char*>(entries->d_un.d_ptr);
    return nullptr;
}

bool NeedsLayer(const dl_phdr_info& module)
{
    for (int index = 0; index < module.dlpi_phnum; ++index)
    {
        const ElfW(Phdr)& header = module.dlpi_phdr[index];
        if (header.p_type != PT_DYNAMIC)
            continue;
        const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(module.dlpi_addr + header.p_vaddr);
        const char* const strings = StringsOf(module, entry);
        for (; strings != nullptr && entry->d_tag != DT_NULL; ++entry)
            if (entry->d_tag == DT_NEEDED &&
                std::string_view(strings + entry->d_un.d_val).substr(0, 13) == "libqxplatform")
                return true;
    }
    return false;
}

int AddModule(dl_phdr_info* module, std::size_t, void* context)
try
{
    CodeList& list = *static_cast<CodeList*>(context);
    list.loads = module->dlpi_adds;
    if (!NeedsLayer(*module))
        return 0;
    for (int index = 0; index < module->dlpi_phnum; ++index)
    {
        const ElfW(Phdr)& header = module->dlpi_phdr[index];
        const std::uintptr_t begin = module->dlpi_addr + header.p_vaddr;
        if (header.p_type == PT_LOAD && (header.p_flags & PF_X) != 0)
            list.ranges.push_back({begin, begin + header.p_memsz});
    }
    return 0;
}
catch (const std::bad_alloc&)
{
    return 1; // ends the iteration
}

} // namespace

void RefreshLayerCode()
{
    const ForkHold hold; // the loader's lock must be free in a child
    static constinit Mutex lock;
    static constinit Forever<std::vector<std::unique_ptr<const CodeList>>> lists;
    std::unique_ptr<CodeList> list(new (std::nothrow) CodeList);
    if (list == nullptr || dl_iterate_phdr(&AddModule, list.get()) != 0)
        return; // out of memory: keep using the previous list
    const std::lock_guard guard(lock);
    const CodeList* const known = codeList.load();
    if (known != nullptr && known->loads >= list->loads)
        return;
    try
    {
        lists.Get().push_back(std::move(list));
        codeList.store(lists.Get().back().get());
    }
    catch (const std::bad_alloc&)
    {
    }
}

bool IsInLayerCode(std::uintptr_t address)
{
    const CodeList* const list = codeList.load();
    return list != nullptr &&
           std::any_of(list->ranges.begin(), list->ranges.end(),
               [address](const Range& range) { return range.begin <= address && address < range.end; });
}

} // namespace qxplatform
