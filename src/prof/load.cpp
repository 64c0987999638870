#include "core/debug_line.h"
#include "core/ticks.h"
#include "files/file.h"
#include "files/name_check.h"
#include "files/temp_files.h"
#include "prof/file_guard.h"
#include "prof/file_replacement.h"
#include "prof/job.h"
#include "prof/load_exception.h"
#include "prof/packed_form.h"
#include "prof/text_form.h"
#include "prof/xfdf_form.h"
#include "prof/xml_form.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace qx
{

namespace
{

constexpr unsigned long long kOpenPatience = 10000; // ms
constexpr DWORD kOpenPause = 100;                   // ms

// Limits how often a profile may be packed, because a crafted file can unpack to itself endlessly.
constexpr unsigned kMostLayers = 16;

// Compares only as many characters as the line has, so that an empty line matches any head.
bool BeginsHead(const String& line, const wchar_t* head)
{
    return line.Compare(head, static_cast<int>(line.Length())) == 0;
}

// Returns where a stream object begins: at the stream's current position, or at its beginning if no data follow.
std::int64_t ObjectPosition(IStream& stream)
{
    ULARGE_INTEGER position{};
    ULARGE_INTEGER end{};
    if (FAILED(stream.Seek(LARGE_INTEGER{}, STREAM_SEEK_CUR, &position)) ||
        FAILED(stream.Seek(LARGE_INTEGER{}, STREAM_SEEK_END, &end)))
        return 0;
    return position.QuadPart < end.QuadPart ? static_cast<std::int64_t>(position.QuadPart) : 0;
}

// Limits the memory of the tree while it is built.
class clsArenaLimit
{
public:
    clsArenaLimit(clsProfArena& arena, std::uint64_t bytes) : _arena(arena)
    {
        _arena.SetLimit(static_cast<std::size_t>(std::min<std::uint64_t>(bytes, SIZE_MAX)));
    }
    clsArenaLimit(const clsArenaLimit&) = delete;
    clsArenaLimit& operator=(const clsArenaLimit&) = delete;
    ~clsArenaLimit() { _arena.RemoveLimit(); }

private:
    clsProfArena& _arena;
};

const wchar_t* SourceName(const clsFile& file)
{
    return file.GetStream() != nullptr ? L"(Stream)" : file.GetName().Text();
}

} // namespace

void clsProfJob::Open(const wchar_t* name)
{
    if (name == nullptr)
        return;
    _fileName = name;
    if (!IsFileNameAllowed(_fileName))
    {
        _error = kProfCannotRead;
        return;
    }

    const clsAutoRelease<clsFile*> file(new clsFileRW);
    bool isLoaded = false;
    // While the job waits for the file, a save may replace it, so the new file is loaded. In the last round, a replaced
    // file is loaded all the same.
    constexpr int kMostRounds = 100;
    int rounds = 0;
    do
    {
        _error = OpenFile(*file);
        if (_error != kProfOk)
            return;
        _isReplaced = false;
        _expectsName = ++rounds < kMostRounds;
        isLoaded = file->GetSize() == 0 || Load(*file);
    } while (_isReplaced);
    _expectsName = false;
    if (!isLoaded)
    {
        if (_error != kProfMalformed)
            _error = kProfLocked;
        return;
    }
    if (_mode != ProfMode::Hold)
        return;
    _heldFile = file;
    _heldPath = FinalPathOf(*file);
}

// Retries only sharing violations: another process may have opened the file exclusively for a moment, to write it.
ProfError clsProfJob::OpenFile(clsFile& file) const
{
    const unsigned long long deadline = UtilGetTicks() + kOpenPatience;
    DWORD systemError = NO_ERROR;
    while (UtilGetTicks() < deadline)
    {
        const int result =
            _mode == ProfMode::Read
                ? file.Open(_fileName, FileAccess::Read, FileDisposition::OpenExisting, FileShare::ReadWrite, kFileData)
                : file.Open(_fileName, FileAccess::ReadWrite,
                      _createsFile ? FileDisposition::OpenAlways : FileDisposition::OpenExisting, FileShare::Read,
                      kFileData);
        if (result == 0)
            return kProfOk;
        systemError = GetLastError();
        if (systemError != ERROR_SHARING_VIOLATION)
            break;
        Sleep(kOpenPause);
    }
    if (systemError == ERROR_SHARING_VIOLATION)
        return kProfLocked;
    return _mode == ProfMode::Read ? kProfCannotRead : kProfCannotWrite;
}

void clsProfJob::OpenStream(IStream* stream)
{
    if (stream == nullptr)
        return;
    const std::int64_t position = _objectLevel != 0 ? ObjectPosition(*stream) : 0;
    const clsAutoRelease<clsFile*> file(new clsFileRW);
    if (file->AttachStream(stream) != 0)
    {
        _error = kProfCannotRead;
        return;
    }
    _heldFile = file;
    file->Seek(position);
    Load(*file);
}

// Sets the error itself if the source can't be locked or is too large, because a job on a stream has no caller that
// would. For a source shorter than the magic number, it only returns false: Open treats this as an error, but an empty
// stream or clipboard is valid.
bool clsProfJob::LoadLayer(clsFile& file, unsigned layer)
{
    const clsFileGuard guard(file);
    if (!guard.IsLocked())
    {
        _error = kProfLocked;
        return false;
    }
    if (std::exchange(_expectsName, false) && !IsFileOfName(file, file.GetName()))
    {
        _isReplaced = true;
        return false;
    }

    if (file.GetSize() > clsProfLineReader::kLargestSource)
        return RefuseLarge(file);
    if (_objectLevel != 0)
        return LoadObject(file);

    file.Seek(0);
    char magic[sizeof(kPackedMagic)];
    if (file.Read(magic, sizeof(magic)) != sizeof(magic))
        return false;
    if (memcmp(magic, kPackedMagic, sizeof(magic)) == 0)
    {
        _isPacked = true;
        _source |= kSourcePacked;
        _unpackLimit = UnpackLimit(file); // of the outermost layer
        return LoadPacked(file, layer);
    }
    file.Seek(0);
    return LoadText(file, file.GetUTFType());
}

bool clsProfJob::RefuseLarge(const clsFile& file)
{
    DebugLine(L"ERR: %s: the profile is too large", SourceName(file));
    _source |= kSourceTooLarge;
    _error = kProfLocked;
    return false;
}

// Returns the largest size to which the source may unpack, because a few bytes can expand to an enormous size. The
// entries count too: each takes more memory than its text if the text is short.
std::uint64_t clsProfJob::UnpackLimit(clsFile& file) const
{
    constexpr std::uint64_t kMostExpansion = 64;
    constexpr std::uint64_t kLeastLimit = std::uint64_t{64} << 20;
    if (_unpackLimit != 0)
        return _unpackLimit;
    return std::max(
        kLeastLimit, kMostExpansion * static_cast<std::uint64_t>(std::max<std::int64_t>(file.GetSize(), 0)));
}

// A stream object is part of a stream with other contents. It is always UTF-16LE, whatever encoding is detected for the
// stream. GetUTFType is called only to skip a byte order mark at the beginning of the stream.
bool clsProfJob::LoadObject(clsFile& file)
{
    const std::int64_t position = file.Tell();
    file.GetUTFType();
    if (position != 0)
        file.Seek(position);
    return LoadText(file, UTFType::UTF16LE);
}

// Unpacks into a temporary file, so that memory use doesn't grow with the unpacked size. If the result is empty, so is
// the profile, as for an empty file. Unpacking stops when the result is too large to be loaded.
bool clsProfJob::LoadPacked(clsFile& file, unsigned layer)
{
    clsFileRWTemp image(L"PRF", L"prf");
    if (!image.IsOpen() || layer == kMostLayers)
    {
        DebugLine(L"ERR: %s: the packed profile can't be unpacked", SourceName(file));
        _error = kProfLocked;
        return false;
    }
    const std::uint64_t largest = std::min<std::uint64_t>(_unpackLimit, clsProfLineReader::kLargestSource);
    const std::uint32_t found = UnpackImage(file, image, static_cast<std::int64_t>(largest));
    if ((found & kSourceTooLarge) != 0)
        return RefuseLarge(file);
    _source |= found;
    image.Seek(std::int64_t{0});
    return image.GetSize() == 0 || LoadLayer(image, layer + 1);
}

bool clsProfJob::LoadText(clsFile& file, UTFType encoding)
{
    clsProfLineReader reader(file, encoding);
    if (!reader.IsLoaded())
        return RefuseLarge(file);
    const String firstLine = reader.PeekLine();
    if (reader.IsWide())
        _arena.Adopt(reader.TakeImage());

    scParseState state{*this, reader};
    const bool isIni = _root.Name().View() == L"/" && firstLine[0] == L'[' && firstLine != L"[/]";
    if (BeginsHead(firstLine, kXmlFirstLine))
        state.form = ProfForm::Xml;
    else if (BeginsHead(firstLine, kXfdfFirstLine))
    {
        state.form = ProfForm::Xfdf;
        reader.PreferUTF8();
    }

    try
    {
        const clsArenaLimit limit(_arena, _isPacked ? _unpackLimit - std::min(_unpackLimit, reader.SourceBytes())
                                                    : std::numeric_limits<std::uint64_t>::max());
        if (state.form == ProfForm::Text && isIni)
            ParseIni(state, _root);
        else
            ParseLevel(state, static_cast<int>(_objectLevel - 1), _root);
        _source |= state.source | static_cast<std::uint32_t>(state.form) | (reader.HasLostText() ? kSourceIgnored : 0u);
        return true;
    }
    catch (const clsArenaFull&)
    {
        _root.RemoveAll();
        return RefuseLarge(file);
    }
    catch (const std::bad_alloc&)
    {
        DebugLine(L"%s: out of memory in line %d", SourceName(file), state.lineCounter);
        _error = kProfLocked;
    }
    catch (clsLoadException* raised)
    {
        const std::unique_ptr<clsLoadException> error(raised);
        if (isIni)
            DebugLine(L"INI: error '%s' in line %d", error->Message().Text(), error->Line());
        else
        {
            DebugLine(L"%s: error '%s' in line %d", SourceName(file), error->Message().Text(), error->Line());
            _error = kProfMalformed;
        }
    }
    return false;
}

} // namespace qx
