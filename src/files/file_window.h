// A bounded view of a file's bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace qx
{

class clsFile;

// Reads a file through one buffer of at most kCapacity bytes, so that a caller can read a few bytes at a time. The file
// must be open, at its beginning, and outlive the window; nothing else may read from it in the meantime.
class FileWindow
{
public:
    static constexpr std::size_t kCapacity = 65'536;

    explicit FileWindow(clsFile& file) : _file(file) {}
    FileWindow(const FileWindow&) = delete;
    FileWindow& operator=(const FileWindow&) = delete;

    // Returns the file's size, or 0 if it can't be determined.
    std::uint64_t Size();

    // Returns the bytes at an offset, or null if the file has fewer than `count` there or they can't be read. `count`
    // is at most kCapacity. The bytes are valid until the next call.
    const std::uint8_t* At(std::uint64_t offset, std::size_t count);

    // Copies bytes to a buffer and returns their number, which is less than `count` only at the end of the file or if
    // they can't be read.
    std::size_t Read(std::uint64_t offset, void* buffer, std::size_t count);

    // Returns how many bytes the window has read from the file.
    std::uint64_t BytesRead() const { return _bytesRead; }

    // Moves the file's position. Returns false on failure.
    bool MoveTo(std::int64_t position);

    // Returns the file, moved to its beginning, for code that reads it in another way. The window may be used again
    // afterwards.
    clsFile& Rewind();

private:
    void Fill(std::uint64_t offset, std::size_t count);

    clsFile& _file;
    std::unique_ptr<std::uint8_t[]> _buffer;
    std::uint64_t _begin = 0; // offset of the first byte in the buffer
    std::size_t _count = 0;   // bytes in the buffer
    std::int64_t _size = -1;  // -1: not queried yet
    std::uint64_t _bytesRead = 0;
    std::int64_t _position = 0; // position of the file; -1: unknown
};

} // namespace qx
