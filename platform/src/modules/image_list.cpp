#include "modules/image_list.h"

#include <algorithm>
#include <climits>

#include <link.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

std::string PathOfProgram()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return length < 0 ? std::string() : std::string(path, static_cast<std::size_t>(length));
}

int AddLoadedImage(dl_phdr_info* info, std::size_t, void* images)
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
    if (begin >= end)
        return 0;
    begin &= ~static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE) - 1);
    auto& list = *static_cast<std::vector<LoadedImage>*>(images);
    // The program is reported first and without a name.
    list.push_back({begin, end - begin, list.empty() ? PathOfProgram() : info->dlpi_name});
    return 0;
}

} // namespace

std::vector<LoadedImage> ListLoadedImages()
{
    std::vector<LoadedImage> images;
    dl_iterate_phdr(AddLoadedImage, &images);
    return images;
}

} // namespace qxplatform
