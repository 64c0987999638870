#include "core/debug_line.h"
#include "core/ticks.h"
#include "files/file.h"
#include "files/name_check.h"
#include "prof/file_guard.h"
#include "prof/file_replacement.h"
#include "prof/job.h"
#include "prof/output.h"
#include "prof/packed_form.h"
#include "prof/text_form.h"
#include "prof/xfdf_form.h"
#include "prof/xml_form.h"

#include <windows.h>

#include <new>

namespace qx
{

namespace
{

constexpr unsigned long long kSavePatience = 10000; // ms
constexpr DWORD kSavePause = 5;                     // ms

constexpr wchar_t kByteOrderMark = 0xFEFF;
constexpr wchar_t kStreamName[] = L"(Stream)";

// Overwrites the contents of the target, which must be locked.
ProfError WriteInPlace(const clsProfOutput& content, clsFile& target)
{
    if (!content.ReplaceContentOf(target))
        return kProfWriteFailed;
    if (target.GetStream() == nullptr)
        FlushFileBuffers(target.GetHandle());
    return kProfOk;
}

enum class Target
{
    Named, // opened for this save
    Held   // opened by the job, which keeps it open
};

// Replaces the target or, if that isn't possible, overwrites its contents. `successor` receives the file that has
// replaced it.
ProfError Deliver(const clsProfOutput& content, clsFile& target, Target kind, clsAutoRelease<clsFile*>& successor)
{
    const clsFileGuard guard(target);
    if (!guard.IsLocked())
        return kProfCannotWrite;
    // While this save waited for the lock, another process may have renamed or replaced the file.
    if (kind == Target::Named && !IsFileOfName(target, target.GetName()))
        return kProfCannotWrite;
    switch (ReplaceFileOf(target, content, kind == Target::Held ? FileShare::Read : FileShare::None, successor))
    {
    case FileReplacement::Done:
        return kProfOk;
    case FileReplacement::Busy:
        return kProfCannotWrite;
    case FileReplacement::Failed:
        return kProfWriteFailed;
    case FileReplacement::Impossible:
        break;
    }
    return WriteInPlace(content, target);
}

ProfError DeliverAndClose(const clsProfOutput& content, clsFile& target)
{
    clsAutoRelease<clsFile*> successor;
    const ProfError error = Deliver(content, target, Target::Named, successor);
    if (successor)
        successor->Close();
    return error;
}

// Writes the file directly under its name, creating it if necessary: for dangling links, and where no side file can be
// created. If the contents can't be written, a new file is deleted again. It is deleted by its full path, because
// `name` may be a link.
ProfError CreateInPlace(const clsProfOutput& content, const String& name)
{
    clsFileRW target;
    if (target.Open(name, FileAccess::Write, FileDisposition::OpenAlways, FileShare::None, kFileData) != 0)
        return kProfCannotWrite;
    const bool isNew = GetLastError() != ERROR_ALREADY_EXISTS;
    const String path = isNew ? FinalPathOf(target) : String();
    const ProfError error = DeliverAndClose(content, target);
    if (error != kProfOk && !path.IsEmpty())
    {
        target.Close();
        DeleteFileW(path.Text());
    }
    return error;
}

// Tries once to save to a name. Clears `mayWorkLater` if another attempt is pointless, for example for a pipe.
ProfError TryToSave(const clsProfOutput& content, const String& name, bool& mayWorkLater)
{
    clsFileRW target;
    if (target.Open(name, FileAccess::Write, FileDisposition::OpenExisting, FileShare::None, kFileData) == 0)
        return DeliverAndClose(content, target);
    if (GetLastError() != ERROR_FILE_NOT_FOUND)
    {
        mayWorkLater = GetLastError() != ERROR_BAD_FILE_TYPE;
        return kProfCannotWrite;
    }
    switch (CreateFileOf(name, content))
    {
    case FileReplacement::Done:
        return kProfOk;
    case FileReplacement::Busy:
        return kProfCannotWrite;
    case FileReplacement::Failed:
        return kProfWriteFailed;
    case FileReplacement::Impossible:
        break;
    }
    return CreateInPlace(content, name);
}

ProfError SaveToName(const clsProfOutput& content, const String& name)
{
    if (!IsFileNameAllowed(name))
        return kProfCannotWrite;
    const unsigned long long deadline = UtilGetTicks() + kSavePatience;
    for (;;)
    {
        bool mayWorkLater = true;
        const ProfError error = TryToSave(content, name, mayWorkLater);
        if (error != kProfCannotWrite || !mayWorkLater || UtilGetTicks() >= deadline)
            return error;
        Sleep(kSavePause);
    }
}

} // namespace

// The image is created first, so that the target is locked only while it is copied.
ProfError clsProfJob::Save(const wchar_t* name, unsigned flags)
{
    clsProfOutput image;
    if (!WriteImage(image, flags))
        return kProfCannotWrite;

    if (IsHeldTarget(name))
        return SaveToHeldFile(image);
    return SaveToName(image, name != nullptr ? String(name) : _fileName);
}

// If a new file replaces the held one, it is opened and locked before the move and becomes the held file.
ProfError clsProfJob::SaveToHeldFile(const clsProfOutput& image)
{
    // Another process has moved the file away.
    if (!_heldPath.IsEmpty() && FinalPathOf(*_heldFile) != _heldPath)
        return kProfCannotWrite;
    clsAutoRelease<clsFile*> successor;
    const ProfError error = Deliver(image, *_heldFile, Target::Held, successor);
    if (successor)
    {
        _heldFile = successor;
        _heldFile->Unlock(scFileLock{0, 1});
    }
    return error;
}

bool clsProfJob::IsHeldTarget(const wchar_t* name) const
{
    if (!_heldFile)
        return false;
    const IString heldName = _heldFile->GetStream() != nullptr ? String(kStreamName) : _heldFile->GetName();
    return name == nullptr || heldName == name;
}

// In every form, the image starts at the beginning of the target, so that nothing loaded from a held stream remains in
// front of it.
ProfError clsProfJob::Serialise(IStream* stream, unsigned flags)
{
    clsProfOutput image;
    if (!WriteImage(image, flags))
        return kProfWriteFailed;

    if (_heldFile && (stream == nullptr || stream == _heldFile->GetStream()))
        return SaveToHeldFile(image);
    // If `stream` is null, the file isn't open and the write fails.
    clsFileRW target(stream);
    return image.ReplaceContentOf(target) ? kProfOk : kProfWriteFailed;
}

bool clsProfJob::WantsPacked(unsigned flags) const
{
    return (flags & kProfSavePacked) != 0 || ((flags & kProfSavePackedAsLoaded) != 0 && _isPacked);
}

bool clsProfJob::WriteImage(clsProfOutput& image, unsigned flags) const
{
    if (!WantsPacked(flags))
        return WriteForm(image, FormOf(flags));
    clsProfOutput plain;
    if (!WriteForm(plain, FormOf(flags)))
        return false;
    PackImage(plain, image);
    return true;
}

// Writes nothing if the root is empty, not even a byte order mark. A stream object has no head and no end. Returns
// false if the form can't represent the tree.
bool clsProfJob::WriteForm(clsProfOutput& output, ProfForm form) const
{
    if (_root.IsEmpty())
        return true;
    const bool isObject = _objectLevel != 0;
    switch (form)
    {
    case ProfForm::Xml:
        if (isObject)
            WriteXmlObject(output, _root, _objectLevel);
        else
            WriteXmlFile(output, _root);
        break;
    case ProfForm::Xfdf:
        if (isObject)
            WriteXfdfObject(output, _root, _objectLevel);
        else
            return WriteXfdfFile(output, _root);
        break;
    case ProfForm::Text:
        if (!isObject)
        {
            wchar_t* out = output.Reserve(1);
            *out++ = kByteOrderMark;
            output.SetUsed(out);
        }
        WriteTextForm(output, _root, _objectLevel);
        break;
    }
    return true;
}

} // namespace qx
