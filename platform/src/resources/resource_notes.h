// Resource images that the build links into a module: ELF notes with the name QXRES.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace qxplatform
{

// Appends the images in one note segment. `alignment` is the alignment in the segment's program header.
void AddResourceImages(
    std::span<const std::byte> notes, std::size_t alignment, std::vector<std::span<const std::byte>>& images);

// Fills a buffer from a position in a file. Returns false if the file is too short.
using ReadAt = std::function<bool(std::uint64_t place, void* buffer, std::size_t size)>;

struct NoteSegment
{
    std::vector<std::byte> bytes;
    std::size_t alignment;
};

// Returns the note segments of an ELF file, up to the first malformed part. Empty if the file is not an ELF file.
std::vector<NoteSegment> ReadNoteSegments(const ReadAt& read);

} // namespace qxplatform
