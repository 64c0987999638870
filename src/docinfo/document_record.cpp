#include "docinfo/document_record.h"

#include "core/debug_line.h"

#include <cstdarg>

namespace qx
{

clsAutoRelease<clsDocu*> clsDocu::Create(
    const String& key, clsDocuList* owner, std::uint32_t lifetime, std::uint32_t timeout)
{
    clsAutoRelease<clsDocu*> record(new clsDocu);
    const std::size_t bar = key.View().find(L'|');
    if (bar == std::wstring_view::npos)
        record->path = key;
    else
    {
        record->path = key.Left(bar);
        record->suffix = clsVariant(key.Mid(bar + 1));
    }
    record->owner = owner;
    record->lifetime = lifetime;
    record->timeout = timeout;
    return record;
}

clsAutoRelease<clsDocu*> clsDocu::Copy() const
{
    clsAutoRelease<clsDocu*> copy(new clsDocu);
    copy->path = path;
    copy->suffix = suffix;
    copy->owner = owner;
    copy->lifetime = lifetime;
    copy->timeout = timeout;
    copy->TakeValues(*this);
    return copy;
}

HRESULT clsDocu::NonDelegatingQueryInterface(REFIID, void** object)
{
    *object = nullptr;
    return E_NOINTERFACE;
}

ULONG clsDocu::NonDelegatingRelease()
{
    return ReleaseObject(this);
}

void clsDocu::Clear()
{
    accessible = false;
    Created = kNoTime;
    LastSaved = kNoTime;
    for (clsVariant* const text : {&Title, &Subject, &Author, &LastAuthor, &Keywords, &Comments})
        *text = clsVariant();
    readTick = 0;
}

void clsDocu::Forget()
{
    Clear();
    reader = nullptr;
    remark.Empty();
}

void clsDocu::TakeValues(const clsDocu& other)
{
    accessible = other.accessible;
    fileTime = other.fileTime;
    Created = other.Created;
    LastSaved = other.LastSaved;
    Title = other.Title;
    Subject = other.Subject;
    Author = other.Author;
    LastAuthor = other.LastAuthor;
    Keywords = other.Keywords;
    Comments = other.Comments;
    resolvedPath = other.resolvedPath;
    readTick = other.readTick.load();
    reader = other.reader;
    remark = other.remark;
}

void clsDocu::SetText(clsVariant& field, const String& text)
{
    // The conversion from zero-terminated text stops at the first zero character.
    field = clsVariant(text.View().find(L'\0') == std::wstring_view::npos ? text : String(text.Text()));
}

void clsDocu::Remark(const wchar_t* format, ...)
{
    if (!remark.IsEmpty() && !UtilIsDebugActive())
        return;
    va_list arguments;
    va_start(arguments, format);
    String line;
    line.FormatV(format, arguments);
    va_end(arguments);
    DebugLine(L"%s", line.Text());
    if (remark.IsEmpty())
        remark = line;
}

} // namespace qx
