// A bounded view of a file's bytes.
#pragma once

#include "core/text/string.h"
#include "files/file.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace qx
{

// Reads a file through one buffer of at most kCapacity bytes, so that a reader may ask for a few bytes at a time. The
// file must be open, at its beginning, and outlive the window; nothing else may read from it in the meantime.
class FileWindow
{
public:
    static constexpr std::size_t kCapacity = 65'536;

    explicit FileWindow(clsFile& file) : _file(file) {}
    FileWindow(const FileWindow&) = delete;
    FileWindow& operator=(const FileWindow&) = delete;

    // Returns the file's size, or 0 if it can't be determined.
    std::uint64_t Size();

    // Returns the bytes at an offset, or null if the file has fewer than `count` there or they can't be read. At most
    // kCapacity bytes; they are valid until the next call.
    const std::uint8_t* At(std::uint64_t offset, std::size_t count);

    // Copies bytes to a buffer and returns their number, which is less than `count` only at the end of the file or if
    // they can't be read.
    std::size_t Read(std::uint64_t offset, void* buffer, std::size_t count);

private:
    void Fill(std::uint64_t offset, std::size_t count);
    bool MoveTo(std::int64_t position);

    clsFile& _file;
    std::unique_ptr<std::uint8_t[]> _buffer;
    std::uint64_t _begin = 0;   // offset of the first byte in the buffer
    std::size_t _count = 0;     // bytes in the buffer
    std::int64_t _size = -1;    // -1: not asked yet
    std::int64_t _position = 0; // of the file
};

// Returns the text at the file's beginning: the first FileWindow::kCapacity bytes up to the first zero byte, from the
// default 8-bit code page. Returns false if the bytes can't be read.
bool ReadFirstText(FileWindow& file, String& text);

// Returns a text from the default 8-bit code page. It ends at the first zero byte.
String TextOfBytes(const std::uint8_t* bytes, std::size_t count);

// Reads a text of at most this many bytes up to its first zero character, whose size is `unit` bytes. In steps, because
// a text may end long before its length.
std::string ReadToZero(FileWindow& file, std::uint64_t begin, std::size_t most, std::size_t unit);

// Returns a text from UTF-16. An odd last byte is left out.
String WideTextOfBytes(std::string_view bytes);

} // namespace qx
