// Reads an arbitrary document in memory.
#pragma once

#include "docinfo/document_file.h"
#include "docinfo/document_record.h"
#include "files/file_window.h"

#include <windows.h>

#include <objbase.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
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

} // namespace qxfuzz
