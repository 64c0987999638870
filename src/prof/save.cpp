#include "core/debug_line.h"
#include "core/ticks.h"
#include "files/file.h"
#include "files/name_check.h"
#include "prof/file_guard.h"
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

// Opens the file exclusively for saving. Waits while other programs have it open. The old contents are kept until the
// new contents have been reserved space.
bool OpenTarget(clsFile& file, const String& name)
{
    if (!IsFileNameAllowed(name))
        return false;
    const unsigned long long deadline = UtilGetTicks() + kSavePatience;
    for (;;)
    {
        if (file.Open(name, FileAccess::Write, FileDisposition::OpenAlways, FileShare::None, kFileData) == 0)
            return true;
        if (UtilGetTicks() >= deadline)
            return false;
        Sleep(kSavePause);
    }
}

ProfError Deliver(const clsProfOutput& output, clsFile& target)
{
    const clsFileGuard guard(target);
    if (!guard.IsLocked())
        return kProfCannotWrite;
    return output.ReplaceContentOf(target) ? kProfOk : kProfWriteFailed;
}

} // namespace

// The image is created first, so that the target is locked only while it is copied.
ProfError clsProfJob::Save(const wchar_t* name, unsigned flags)
{
    clsProfOutput image;
    if (!WriteImage(image, flags))
        return kProfCannotWrite;

    if (IsHeldTarget(name))
        return Deliver(image, *_heldFile);
    clsFileRW target;
    if (!OpenTarget(target, name != nullptr ? String(name) : _fileName))
        return kProfCannotWrite;
    return Deliver(image, target);
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
        return Deliver(image, *_heldFile);
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
