// Reads the headers of ELF images: which symbols an image has, and how to find its debug information.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <libelf.h>

namespace qxplatform
{

// An ELF image in a file, or in memory that outlives this object.
class ElfImage
{
public:
    explicit ElfImage(const std::string& path);
    ElfImage(const void* memory, std::size_t size);
    ElfImage(const ElfImage&) = delete;
    ElfImage& operator=(const ElfImage&) = delete;
    ~ElfImage();

    // Null if there is no such image.
    Elf* Get() const { return _elf; }

    // Return the file or the image and transfer its ownership to the caller.
    int TakeFile();
    Elf* TakeImage();

private:
    int _file = -1;
    Elf* _elf = nullptr;
};

struct ElfHeaders
{
    bool isImage = false;
    bool hasDebugInfo = false;      // .debug_info, compressed or not
    bool hasSymbolTable = false;    // .symtab, or one in .gnu_debugdata
    bool hasDynamicSymbols = false; // .dynsym
    unsigned machine = 0;
    std::uint64_t firstAddress = 0; // of the first segment, rounded down to a page
    std::uint64_t size = 0;         // of all segments together
    std::string buildId;            // bytes; empty if there is none
    std::string debugLink;          // the name of the separate file; empty if there is none
    std::uint32_t debugLinkChecksum = 0;
};

// Reads headers and notes only.
ElfHeaders ReadElfHeaders(Elf* elf);

} // namespace qxplatform
