// The lines of a source, which is read into memory at once.
#pragma once

#include "core/text/string.h"
#include "files/utf_type.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace qx
{

class clsFile;

// One line without its leading blanks and tabs; zero-terminated, and without a zero inside.
struct scProfLine
{
    wchar_t* text = nullptr;
    std::size_t length = 0;
    // Some character is one that reading turns back into another: a quick test, true more often than needed.
    bool mayBeEncoded = false;

    std::wstring_view View() const { return {text, length}; }
};

// Works on a file that stands behind any byte order mark, with the encoding as clsFile::GetUTFType tells it. A byte
// order other than ours is read without swapping, so such a source gives few lines and no values that make sense.
//
// A zero character in a source ends its line: what follows it up to the line's end is passed over.
class clsProfLineReader
{
public:
    static constexpr std::int64_t kLargestSource = 0x7FFFFFFE;

    clsProfLineReader(clsFile& file, UTFType encoding);

    // False if the source is larger than memory or than the reader takes (2 GB). Then there are no lines.
    bool IsLoaded() const { return _isLoaded; }
    // The size of the source behind its mark.
    std::uint64_t SourceBytes() const { return _sourceBytes; }

    // False at the end of the text. A line is valid until the next call, and its caller may change it.
    bool NextLine(scProfLine& line);

    // The next line without moving on; empty at the end of the text.
    String PeekLine() const;

    // For a source whose head says that it is UTF-8: 8-bit lines that are, are read as that, whatever the look at the
    // whole has told.
    void PreferUTF8() { _prefersUTF8 = true; }

    // A 16-bit source is cut into lines in place: whoever takes its text over can keep the lines. The reader goes on
    // reading from it.
    bool IsWide() const { return _isWide; }
    std::unique_ptr<wchar_t[]> TakeImage() { return std::move(_wide); }

private:
    void LoadWide(clsFile& file, std::size_t bytes);
    void LoadNarrow(clsFile& file, std::size_t bytes);
    bool NextWideLine(scProfLine& line);
    bool NextNarrowLine(scProfLine& line);
    bool ConvertUTF8(const char* begin, std::size_t length);
    void ConvertLine(const char* begin, std::size_t length, scProfLine& line);

    std::unique_ptr<wchar_t[]> _wide;
    wchar_t* _nextWide = nullptr;
    wchar_t* _endWide = nullptr;

    std::unique_ptr<char[]> _narrow;
    char* _nextNarrow = nullptr;
    char* _endNarrow = nullptr;
    std::uint32_t _codePage = 0;
    std::uint64_t _sourceBytes = 0;
    std::vector<wchar_t> _converted;

    bool _prefersUTF8 = false;
    bool _isWide = false;
    bool _isLoaded = false;
};

} // namespace qx
