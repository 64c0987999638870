// Resource images as the build links them into a module: ELF notes with the name QXRES.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace qxplatform
{

// The images in one segment of notes, whose program header tells the alignment.
void AddResourceImages(
    std::span<const std::byte> notes, std::size_t alignment, std::vector<std::span<const std::byte>>& images);

// Fills a buffer from a place of a file; false if the file has not all of it.
using ReadAt = std::function<bool(std::uint64_t place, void* buffer, std::size_t size)>;

struct NoteSegment
{
    std::vector<std::byte> bytes;
    std::size_t alignment;
};

// The segments of notes of an ELF file, as far as it is sound; none if it is no such file.
std::vector<NoteSegment> ReadNoteSegments(const ReadAt& read);

} // namespace qxplatform
