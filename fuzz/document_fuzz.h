// Reads an arbitrary document in memory.
#pragma once

#include "docinfo/document_file.h"
#include "docinfo/document_record.h"
#include "docinfo/file_text.h"
#include "files/file_window.h"

#include <windows.h>

#include <objbase.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace qxfuzz
{

using Reader = int (*)(qx::clsDocu& record, qx::FileWindow& file);

// Aborts if the reader returns neither 0 nor -1, or if a text field is neither empty nor a BSTR.
inline qx::clsAutoRelease<qx::clsDocu*> ReadDocument(Reader reader, const std::uint8_t* data, std::size_t size)
{
    IStream* stream = nullptr;
    if (CreateStreamOnHGlobal(nullptr, TRUE, &stream) != S_OK)
        std::abort();
    const LARGE_INTEGER begin = {};
    stream->Write(data, static_cast<ULONG>(size), nullptr);
    stream->Seek(begin, STREAM_SEEK_SET, nullptr);
    auto record = qx::clsDocu::Create(qx::String(L"in memory"), nullptr, 0, 0);
    {
        qx::clsDocFile file(stream);
        qx::FileWindow window(file);
        const int result = reader(*record, window);
        if (result != 0 && result != -1)
            std::abort();
    }
    stream->Release();
    for (const qx::clsVariant* const text :
        {&record->Title, &record->Subject, &record->Author, &record->LastAuthor, &record->Keywords, &record->Comments})
        if (text->Type() != VT_EMPTY && text->Type() != VT_BSTR)
            std::abort();
    return record;
}

using Parser = void (*)(qx::clsDocu& record, std::wstring_view text);

// Parses the text at the document's beginning. Aborts if the text of a field isn't part of it. Keywords may be joined,
// but never grow.
template <Parser parse>
int ReadParts(qx::clsDocu& record, qx::FileWindow& file)
{
    qx::String text;
    if (!qx::ReadFirstText(file, text))
        return 0;
    parse(record, text.View());
    for (const qx::clsVariant* const field :
        {&record.Title, &record.Subject, &record.Author, &record.LastAuthor, &record.Comments})
        if (text.View().find(qx::ToString(*field).View()) == std::wstring_view::npos)
            std::abort();
    if (qx::ToString(record.Keywords).Length() > text.Length())
        std::abort();
    return 0;
}

} // namespace qxfuzz
