#include "resources/resource_notes.h"

#include <elf.h>

#include <algorithm>
#include <cstring>

namespace qxplatform
{

namespace
{

constexpr char kName[] = "QXRES";

// Larger notes can't come from this project's build, so they are ignored.
constexpr std::size_t kMaxNotes = 64 << 20;

std::size_t Aligned(std::size_t place, std::size_t alignment)
{
    return (place + alignment - 1) / alignment * alignment;
}

bool IsElf64(const Elf64_Ehdr& header)
{
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == ELFCLASS64 &&
           header.e_ident[EI_DATA] == ELFDATA2LSB && header.e_phentsize == sizeof(Elf64_Phdr);
}

} // namespace

void AddResourceImages(
    std::span<const std::byte> notes, std::size_t alignment, std::vector<std::span<const std::byte>>& images)
{
    const std::size_t unit = alignment == 8 ? 8 : 4; // as the format requires
    Elf64_Nhdr note;
    while (notes.size() >= sizeof note)
    {
        std::memcpy(&note, notes.data(), sizeof note);
        const std::size_t content = sizeof note + Aligned(note.n_namesz, unit);
        if (content > notes.size() || note.n_descsz > notes.size() - content)
            return;
        if (note.n_namesz == sizeof kName && std::memcmp(notes.data() + sizeof note, kName, sizeof kName) == 0)
            images.push_back(notes.subspan(content, note.n_descsz));
        notes = notes.subspan(std::min(Aligned(content + note.n_descsz, unit), notes.size()));
    }
}

std::vector<NoteSegment> ReadNoteSegments(const ReadAt& read)
{
    Elf64_Ehdr header;
    if (!read(0, &header, sizeof header) || !IsElf64(header))
        return {};
    std::vector<Elf64_Phdr> segments(header.e_phnum);
    if (!read(header.e_phoff, segments.data(), segments.size() * sizeof(Elf64_Phdr)))
        return {};
    std::vector<NoteSegment> notes;
    std::size_t room = kMaxNotes;
    for (const Elf64_Phdr& segment : segments)
    {
        if (segment.p_type != PT_NOTE || segment.p_filesz > room)
            continue;
        room -= segment.p_filesz;
        NoteSegment note{std::vector<std::byte>(segment.p_filesz), segment.p_align};
        if (read(segment.p_offset, note.bytes.data(), note.bytes.size()))
            notes.push_back(std::move(note));
    }
    return notes;
}

} // namespace qxplatform
