// One open profile.
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

// The codes of the whole family, as callers get them.
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

// The low four bits of the flags of a save, and what stands above them.
enum class ProfForm : unsigned
{
    Text = 0,
    Xml = 1,
    Xfdf = 2
};
constexpr unsigned kProfFormMask = 0x0F; // any other value in it is that of XML
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

enum class ProfMode
{
    Read = 0, // the source is closed when it's loaded
    Hold = 1  // the source stays open as long as the job
};

class clsProfOutput;

// The tree with its memory, and the tie to a file. One job is for one thread at a time; only the reference count may be
// changed from several. No virtual operations.
class clsProfJob
{
public:
    // Starts with one reference. The root of a stream object has that object's name and level.
    explicit clsProfJob(ProfMode mode, std::wstring_view rootName = L"/", std::uint32_t objectLevel = 0);
    clsProfJob(const clsProfJob&) = delete;
    clsProfJob& operator=(const clsProfJob&) = delete;

    void AddRef() { _references.fetch_add(1, std::memory_order_relaxed); }
    void Release();

    // --- The file side ---

    // Opens and loads the named file. Whatever fails is left as the job's error.
    void Open(const wchar_t* name);
    // Attaches and loads a stream, which the job holds from then on, also when loading fails: from its beginning, or
    // for a stream object from where it stands.
    void OpenStream(IStream* stream);
    // Loads what the clipboard holds. `window` opens it.
    void OpenFromClipboard(HWND window);
    // Reads an open file or stream into the tree; true when parsing ran to its end.
    bool Load(clsFile& file) { return LoadLayer(file, 0); }
    // Writes the tree to the named file, or with null to the job's own.
    ProfError Save(const wchar_t* name, unsigned flags);
    // Writes the tree to a stream, or with null to the held file, from its beginning.
    ProfError Serialise(IStream* stream, unsigned flags);
    // Adds the tree to what the clipboard holds, never packed.
    ProfError SaveToClipboard(HWND window, unsigned flags) const;

    ProfError Error() const { return _error; }
    std::uint32_t ObjectLevel() const { return _objectLevel; }
    bool IsPacked() const { return _isPacked; }

    // --- The tree ---

    clsItemList& Root() { return _root; }
    const clsItemList& Root() const { return _root; }

    // Makes an item that is in no list yet.
    clsItem& NewLeaf(std::wstring_view name, std::wstring_view value);
    // A leaf whose value stays where it is, zero-terminated, as long as the job (an adopted source image).
    clsItem& NewLeafInImage(std::wstring_view name, const wchar_t* value, std::size_t length);
    // The list below `parent` isn't in it yet either, so that it can be filled before it is seen. Its name loses a
    // leading '[' and with it its last character, whatever that is.
    clsItem& NewList(clsItemList& parent, std::wstring_view name);
    // Gives up an item that is in no list, with all that is below it.
    void ReleaseItem(clsItem& item) noexcept;

    void SetValue(clsItem& leaf, std::wstring_view value);

    // Appends a deep copy of all entries of `source`, which may be any list of any job, also the target itself or a
    // list around it: what is copied is what it held at the beginning.
    void CopyItems(clsItemList& target, const clsItemList& source);

    clsProfArena& Arena() { return _arena; }

private:
    ~clsProfJob() = default;

    clsItem& NewItem(std::wstring_view name);
    const scProfText& InternName(std::wstring_view name);
    const scProfText* InternValue(std::wstring_view value);
    void ReleaseValue(clsItem& item) noexcept;

    // load.cpp
    ProfError OpenFile(clsFile& file) const;
    bool LoadText(clsFile& file, UTFType encoding);
    bool LoadLayer(clsFile& file, unsigned layer);
    bool RefuseLarge(const clsFile& file);
    bool LoadObject(clsFile& file);
    bool LoadPacked(clsFile& file, unsigned layer);

    // save.cpp
    bool WantsPacked(unsigned flags) const;
    bool WriteImage(clsProfOutput& image, unsigned flags) const;
    bool WriteForm(clsProfOutput& output, ProfForm form) const;
    bool IsHeldTarget(const wchar_t* name) const;

    clsProfArena _arena; // before all that lives in it
    clsRefCountedObjectCache _names{_arena};
    clsRefCountedObjectCache _values{_arena};
    String _fileName; // as given at open
    ProfMode _mode;
    clsItemList _root;
    ProfError _error = kProfOk;
    clsAutoRelease<clsFile*> _heldFile;
    std::uint32_t _objectLevel;
    std::atomic<std::int32_t> _references = 1;
    bool _isPacked = false;
    bool _isCacheEnabled;
};

} // namespace qx
