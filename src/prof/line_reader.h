// Splits a source into lines. The whole source is read into memory at once.
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

// One line without its leading blanks and tabs. Zero-terminated, with no zeros inside.
struct scProfLine
{
    wchar_t* text = nullptr;
    std::size_t length = 0;
    // True if the line may contain characters that the text form uses as replacements for others. A quick test with
    // false positives.
    bool mayBeEncoded = false;

    std::wstring_view View() const { return {text, length}; }
};

// Reads a file from its current position, which must follow any byte order mark. `encoding` is the result of
// clsFile::GetUTFType. UTF-16BE is read without swapping bytes, so such a source yields few lines and no useful values.
//
// A zero character ends its line; the rest of the line is skipped.
class clsProfLineReader
{
public:
    static constexpr std::int64_t kLargestSource = 0x7FFFFFFE;

    clsProfLineReader(clsFile& file, UTFType encoding);

    // Returns false if the source is larger than 2 GB or than the available memory. There are no lines in this case.
    bool IsLoaded() const { return _isLoaded; }
    // Returns true if characters of the lines read so far were dropped or couldn't be decoded.
    bool HasLostText() const { return _hasLostText; }
    // Returns the size of the source without its byte order mark.
    std::uint64_t SourceBytes() const { return _sourceBytes; }

    // Returns false at the end of the text. The line is valid until the next call, and the caller may modify it.
    bool NextLine(scProfLine& line);

    // Returns the next line without consuming it. Returns an empty text at the end of the source.
    String PeekLine() const;

    // Decodes lines that are valid UTF-8 as UTF-8 even if the detected encoding is a different one. Called for a source
    // whose head declares UTF-8.
    void PreferUTF8() { _prefersUTF8 = true; }

    // A 16-bit source is split into lines in place. A caller that takes the image can keep the lines; the reader
    // continues to read from it.
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
    bool _hasLostText = false;
};

} // namespace qx
