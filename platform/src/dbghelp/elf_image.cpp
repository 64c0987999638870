#include "dbghelp/elf_image.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include <elfutils/libdwelf.h>
#include <fcntl.h>
#include <gelf.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

constexpr std::uint64_t kPageMask = 0xFFF;

// Opens a regular file. Returns -1 for anything else: opening a pipe or a device could block.
int OpenRegularFile(const std::string& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status;
    if (file < 0 || (fstat(file, &status) == 0 && S_ISREG(status.st_mode)))
        return file;
    close(file);
    return -1;
}

void AddSections(Elf* elf, ElfHeaders& headers)
{
    std::size_t names = 0;
    if (elf_getshdrstrndx(elf, &names) != 0)
        return;
    for (Elf_Scn* section = nullptr; (section = elf_nextscn(elf, section)) != nullptr;)
    {
        GElf_Shdr header;
        if (gelf_getshdr(section, &header) == nullptr || header.sh_type == SHT_NOBITS)
            continue;
        const char* const text = elf_strptr(elf, names, header.sh_name);
        const std::string_view name = text == nullptr ? "" : text;
        if (name == ".debug_info" || name == ".zdebug_info")
            headers.hasDebugInfo = true;
        else if (header.sh_type == SHT_SYMTAB || name == ".gnu_debugdata")
            headers.hasSymbolTable = true;
        else if (header.sh_type == SHT_DYNSYM)
            headers.hasDynamicSymbols = true;
    }
}

void AddSegments(Elf* elf, ElfHeaders& headers)
{
    std::size_t count = 0;
    if (elf_getphdrnum(elf, &count) != 0)
        return;
    std::uint64_t begin = UINT64_MAX;
    std::uint64_t end = 0;
    for (std::size_t index = 0; index < count; ++index)
    {
        GElf_Phdr header;
        if (gelf_getphdr(elf, static_cast<int>(index), &header) == nullptr || header.p_type != PT_LOAD)
            continue;
        begin = std::min<std::uint64_t>(begin, header.p_vaddr & ~kPageMask);
        end = std::max<std::uint64_t>(end, header.p_vaddr + header.p_memsz);
    }
    if (begin >= end)
        return;
    headers.firstAddress = begin;
    headers.size = end - begin;
}

} // namespace

ElfImage::ElfImage(const std::string& path) : _file(OpenRegularFile(path))
{
    // Only headers are read. Mapping the file would cost more than reading them: removing a mapping interrupts the
    // processors of all threads.
    if (_file >= 0)
        _elf = elf_begin(_file, ELF_C_READ, nullptr);
}

ElfImage::ElfImage(const void* memory, std::size_t size)
    : _elf(elf_memory(static_cast<char*>(const_cast<void*>(memory)), size))
{
}

ElfImage::~ElfImage()
{
    elf_end(_elf);
    if (_file >= 0)
        close(_file);
}

int ElfImage::TakeFile()
{
    elf_end(std::exchange(_elf, nullptr));
    return std::exchange(_file, -1);
}

Elf* ElfImage::TakeImage()
{
    return std::exchange(_elf, nullptr);
}

ElfHeaders ReadElfHeaders(Elf* elf)
{
    ElfHeaders headers;
    GElf_Ehdr header;
    if (elf == nullptr || elf_kind(elf) != ELF_K_ELF || gelf_getehdr(elf, &header) == nullptr)
        return headers;
    headers.isImage = true;
    headers.machine = header.e_machine;
    AddSections(elf, headers);
    AddSegments(elf, headers);
    const void* id = nullptr;
    if (const ssize_t length = dwelf_elf_gnu_build_id(elf, &id); length > 0)
        headers.buildId.assign(static_cast<const char*>(id), static_cast<std::size_t>(length));
    GElf_Word checksum = 0;
    if (const char* const link = dwelf_elf_gnu_debuglink(elf, &checksum))
    {
        headers.debugLink = link;
        headers.debugLinkChecksum = checksum;
    }
    return headers;
}

} // namespace qxplatform
