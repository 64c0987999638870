#include "core/debug_line.h"
#include "core/ticks.h"
#include "files/file.h"
#include "files/name_check.h"
#include "prof/file_guard.h"
#include "prof/job.h"
#include "prof/output.h"
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

ProfForm FormOf(unsigned flags)
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

// Opens the file for a save, for this process alone. Whoever has it open is waited for. What it holds isn't taken away
// yet: that comes when the new content has its place.
bool OpenTarget(clsFile& file, const String& name)
{
    if (!IsFileNameAllowed(name))
        return false;
    const unsigned long long deadline = UtilGetTicks() + kSavePatience;
    for (;;)
    {
        if (file.Open(name, FileAccess::ReadWrite, FileDisposition::OpenAlways, FileShare::None, kFileData) == 0)
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

// The text is made first, so that the target is held for the copy only.
ProfError clsProfJob::Save(const wchar_t* name, unsigned flags)
{
    clsProfOutput output;
    if (WriteForm(output, flags) != kProfOk)
        return kProfCannotWrite;

    if (IsHeldTarget(name))
        return Deliver(output, *_heldFile);
    clsFileRW target;
    if (!OpenTarget(target, name != nullptr ? String(name) : _fileName))
        return kProfCannotWrite;
    return Deliver(output, target);
}

bool clsProfJob::IsHeldTarget(const wchar_t* name) const
{
    if (!_heldFile)
        return false;
    const IString heldName = _heldFile->GetStream() != nullptr ? String(kStreamName) : _heldFile->GetName();
    return name == nullptr || heldName == name;
}

ProfError clsProfJob::Serialise(IStream* stream, unsigned flags)
{
    clsProfOutput output;
    if (const ProfError error = WriteForm(output, flags); error != kProfOk)
        return error;

    if (_heldFile && (stream == nullptr || stream == _heldFile->GetStream()))
        return output.ReplaceContentOf(*_heldFile) ? kProfOk : kProfWriteFailed;
    // What isn't open takes no byte.
    clsFileRW target(stream);
    return output.ReplaceContentOf(target) ? kProfOk : kProfWriteFailed;
}

// A profile with an empty root is nothing at all, not even a byte order mark.
ProfError clsProfJob::WriteForm(clsProfOutput& output, unsigned flags) const
{
    const bool wantsPacked = (flags & kProfSavePacked) != 0 || ((flags & kProfSavePackedAsLoaded) != 0 && _isPacked);
    if (wantsPacked)
    {
        DebugLine(L"ERR: this form of a profile isn't written yet (flags 0x%x)", flags);
        return kProfWriteFailed;
    }
    if (!_root.IsEmpty())
        WriteUnpacked(output, FormOf(flags));
    return kProfOk;
}

// A stream object has neither head nor end.
void clsProfJob::WriteUnpacked(clsProfOutput& output, ProfForm form) const
{
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
            WriteXfdfFile(output, _root);
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
}

} // namespace qx
