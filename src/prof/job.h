// An open profile.
#pragma once

#include "core/text/string.h"
#include "files/file.h"
#include "prof/arena.h"
#include "prof/item.h"
#include "prof/object_cache.h"

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

struct IStream;

namespace qx
{

// Error codes of all profile functions, as returned to callers.
enum ProfError : std::int32_t
{
    kProfOk = 0,
    kProfCannotRead = -1,
    kProfCannotWrite = -3,
    kProfWriteFailed = -4,
    kProfInvalidJob = -5,
    kProfNoLeaf = -6,
    kProfMalformed = -7,
    kProfStopped = -8,
    kProfNotOfThisType = -9,
    kProfLocked = -10
};

// The form of a saved profile: the low four bits of the flags of a save. The higher bits are the kProfSave... flags.
enum class ProfForm : unsigned
{
    Text = 0,
    Xml = 1,
    Xfdf = 2
};
constexpr unsigned kProfFormMask = 0x0F; // values other than those of ProfForm select XML
constexpr unsigned kProfSavePacked = 0x40;
constexpr unsigned kProfSavePackedAsLoaded = 0x80;

constexpr ProfForm FormOf(unsigned flags)
{
    switch (flags & kProfFormMask)
    {
    case static_cast<unsigned>(ProfForm::Text):
        return ProfForm::Text;
    case static_cast<unsigned>(ProfForm::Xfdf):
        return ProfForm::Xfdf;
    default:
        return ProfForm::Xml;
    }
}

// Properties of the source found by a load, in the bits above the form. A save of the job would lose the parts that
// they describe.
enum ProfSource : std::uint32_t
{
    kSourcePacked = 0x40,
    kSourceForeign = 0x100,
    kSourceIni = 0x200,
    kSourceTruncated = 0x400,
    kSourceComments = 0x800,
    kSourceIgnored = 0x1000,
    kSourceFlattened = 0x2000,
    kSourceTooLarge = 0x4000,
    kSourceDamaged = 0x8000
};

enum class ProfMode
{
    Read = 0, // the source is closed after loading
    Hold = 1  // the source stays open as long as the job exists
};

class clsProfOutput;

// An open profile: the tree, its memory and the connection to a file. A job may be used by one thread at a time; only
// the reference count is thread-safe. No virtual functions.
class clsProfJob
{
public:
    // The new job has one reference. The root of a stream object has the name and level of that object.
    explicit clsProfJob(ProfMode mode, std::wstring_view rootName = L"/", std::uint32_t objectLevel = 0);
    clsProfJob(const clsProfJob&) = delete;
    clsProfJob& operator=(const clsProfJob&) = delete;

    void AddRef() { _references.fetch_add(1, std::memory_order_relaxed); }
    void Release();

    // --- Files ---

    // Opens and loads the named file. A failure is reported by Error().
    void Open(const wchar_t* name);
    // Makes Open fail instead of creating a missing file.
    void ExpectFile() { _createsFile = false; }
    // Sets the largest size of a packed source in memory (the unpacked text and the tree together), instead of one in
    // proportion to the source.
    void SetUnpackLimit(std::uint64_t bytes) { _unpackLimit = bytes; }
    // Attaches a stream and loads it from its beginning, or, for a stream object, from its current position. The job
    // holds the stream afterwards, even if loading fails.
    void OpenStream(IStream* stream);
    // Loads the profile on the clipboard. `window` is the window that opens the clipboard.
    void OpenFromClipboard(HWND window);
    // Reads an open file or stream into the tree. Returns true if the source was parsed to its end.
    bool Load(clsFile& file) { return LoadLayer(file, 0); }
    // Writes the tree to the named file, or to the job's own file if `name` is null.
    ProfError Save(const wchar_t* name, unsigned flags);
    // Writes the tree to the beginning of a stream, or of the held file if `stream` is null.
    ProfError Serialise(IStream* stream, unsigned flags);
    // Adds the tree to the clipboard, keeping its other formats. Never packed.
    ProfError SaveToClipboard(HWND window, unsigned flags) const;

    ProfError Error() const { return _error; }
    std::uint32_t ObjectLevel() const { return _objectLevel; }
    bool IsPacked() const { return _isPacked; }
    // Returns the form of the source and ProfSource bits.
    std::uint32_t Source() const { return _source; }

    // --- The tree ---

    clsItemList& Root() { return _root; }
    const clsItemList& Root() const { return _root; }

    // Creates a leaf that isn't in any list yet.
    clsItem& NewLeaf(std::wstring_view name, std::wstring_view value);
    // Returns the interned name, or null if each item needs a name of its own.
    const scProfText* SharedName(std::wstring_view name);
    // Creates a leaf with a name from SharedName. This doesn't take longer if the name is long.
    clsItem& NewLeaf(const scProfText& sharedName, std::wstring_view value);
    // The same, but the value isn't copied. It must be zero-terminated and live as long as the job, as an adopted
    // source image does.
    clsItem& NewLeafInImage(std::wstring_view name, const wchar_t* value, std::size_t length);
    // Creates a list for `parent` without inserting it, so that it can be filled before it becomes visible. If the name
    // begins with '[', its first and last characters are removed.
    clsItem& NewList(clsItemList& parent, std::wstring_view name);
    // Releases an item that isn't in any list, with everything below it.
    void ReleaseItem(clsItem& item) noexcept;

    void SetValue(clsItem& leaf, std::wstring_view value);

    // Appends a deep copy of all items of `source`, which may be any list of any job, including the target and the
    // lists that enclose it. The copy contains the state of `source` at the time of the call.
    void CopyItems(clsItemList& target, const clsItemList& source);

    clsProfArena& Arena() { return _arena; }

private:
    ~clsProfJob() = default;

    clsItem& NewItem(std::wstring_view name);
    const scProfText& InternName(std::wstring_view name);
    const scProfText* InternValue(std::wstring_view value);
    void ReleaseValue(clsItem& item) noexcept;

    // Defined in load.cpp.
    ProfError OpenFile(clsFile& file) const;
    bool LoadText(clsFile& file, UTFType encoding);
    bool LoadLayer(clsFile& file, unsigned layer);
    bool RefuseLarge(const clsFile& file);
    std::uint64_t UnpackLimit(clsFile& file) const;
    bool LoadObject(clsFile& file);
    bool LoadPacked(clsFile& file, unsigned layer);

    // Defined in save.cpp.
    bool WantsPacked(unsigned flags) const;
    bool WriteImage(clsProfOutput& image, unsigned flags) const;
    bool WriteForm(clsProfOutput& output, ProfForm form) const;
    ProfError SaveToHeldFile(const clsProfOutput& image);
    bool IsHeldTarget(const wchar_t* name) const;

    clsProfArena _arena; // declared before the members that allocate from it
    clsRefCountedObjectCache _names{_arena, clsRefCountedObjectCache::Counting::Off};
    clsRefCountedObjectCache _values{_arena, clsRefCountedObjectCache::Counting::On};
    String _fileName; // as passed to Open
    ProfMode _mode;
    clsItemList _root;
    ProfError _error = kProfOk;
    clsAutoRelease<clsFile*> _heldFile;
    String _heldPath; // the full path of a held file when it was opened; empty for streams
    std::uint32_t _objectLevel;
    std::uint32_t _source = 0;
    bool _createsFile = true;       // in the mode Hold
    std::uint64_t _unpackLimit = 0; // 0: in proportion to the source
    std::atomic<std::int32_t> _references = 1;
    bool _isPacked = false;
    bool _expectsName = false; // the file being loaded must still have its name
    bool _isReplaced = false;  // the loaded file no longer has its name
    bool _isCacheEnabled;
};

} // namespace qx
