// The record of one document.
#pragma once

#include "core/critical_section.h"
#include "core/text/string.h"
#include "core/variant/variant.h"
#include "files/iunknown_impl.h"
#include "locale/time_arithmetic.h"

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace qx
{

class clsDocuList;

// A document's record. Readers fill in the public fields, dates in UTC or kNoTime. The texts are VT_EMPTY until a
// reader sets them, then VT_BSTR.
//
// The list may return the record to several threads. A thread that reads or writes its fields must hold Section(),
// unless the record is a private copy of that thread.
class clsDocu : public clsIUnknownImpl
{
public:
    // `key` is the path, optionally followed by "|" and a suffix. The times are in milliseconds. The result holds the
    // only reference.
    static clsAutoRelease<clsDocu*> Create(
        const String& key, clsDocuList* owner, std::uint32_t lifetime, std::uint32_t timeout);
    // Returns a new record with the same values.
    clsAutoRelease<clsDocu*> Copy() const;

    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE NonDelegatingRelease() override;
    // Reserved. Keeps its slot in the vtable.
    virtual void OnChanged() {}
    virtual ~clsDocu() = default;

    // Empties the fields and makes the record invalid. The reader and its remark are kept to explain why.
    void Clear();
    // Clears the record because there was nothing to read.
    void Forget();
    // Copies the values and the state of another record with the same key.
    void TakeValues(const clsDocu& other);
    // Returns true if the record was read at most `lifetime` milliseconds before `now`. May be called without holding
    // Section().
    bool IsValidAt(std::uint64_t now) const
    {
        const std::uint64_t tick = readTick;
        return tick != 0 && now <= tick + lifetime;
    }

    // Sets a text field. A text ends at its first zero character.
    static void SetText(clsVariant& field, const String& text);

    // Writes a reader's message to the debug output. The record keeps the first one as its remark.
    void Remark(const wchar_t* format, ...);

    clsCriticalSection& Section() const { return _section; }

    String path; // the key up to the first "|"
    std::uint32_t lifetime = 0;
    std::atomic<std::uint64_t> readTick = 0; // tick of the last refresh; 0 if the record is invalid
    clsDocuList* owner = nullptr;
    bool accessible = false;       // the file could be opened at the last read
    SYSTEMTIME fileTime = kNoTime; // the file's last write, as last seen
    SYSTEMTIME Created = kNoTime;
    SYSTEMTIME LastSaved = kNoTime;
    clsVariant suffix; // what follows the first "|" of the key; no reader uses it
    clsVariant Title;
    clsVariant Subject;
    clsVariant Author;
    clsVariant LastAuthor;
    clsVariant Keywords;
    clsVariant Comments;
    String resolvedPath; // the path that was read
    std::uint32_t timeout = 0;
    std::atomic<bool> refreshable = true; // while false, a refresh does nothing

    const wchar_t* reader = nullptr; // the name of the reader chosen for the file; a literal
    String remark;                   // the first message of the reader

private:
    clsDocu() = default;

    mutable clsCriticalSection _section;
};

} // namespace qx
