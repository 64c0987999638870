// A document in memory, and the record that a reader makes of it.
#pragma once

#include "docinfo/document_file.h"
#include "docinfo/document_record.h"
#include "docinfo/file_window.h"
#include "support/memory_stream.h"
#include "support/readable_text.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace qxtest
{

// No 64 KB take longer, on a busy machine either. Programs are slower with the sanitizers and in the emulator.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(_WIN32)
constexpr double kMostSeconds = 30;
#else
constexpr double kMostSeconds = 5;
#endif

using Reader = int (*)(qx::clsDocu& record, qx::FileWindow& file);

class ReadRecord
{
public:
    ReadRecord(Reader reader, std::string_view bytes)
        : _record(qx::clsDocu::Create(qx::String(L"in memory"), nullptr, 0, 0))
    {
        const MemoryStream stream(bytes);
        qx::clsDocFile file(stream);
        qx::FileWindow window(file);
        _result = reader(*_record, window);
    }

    int Result() const { return _result; }
    qx::clsDocu* operator->() const { return _record.Get(); }

private:
    qx::clsAutoRelease<qx::clsDocu*> _record;
    int _result;
};

// Returns the text, or "-" if the field is empty.
inline std::string TextOf(const qx::clsVariant& field)
{
    return field.Type() == VT_EMPTY ? "-" : ReadableText(qx::ToString(field).View());
}

inline std::string DateOf(const SYSTEMTIME& date)
{
    if (std::memcmp(&date, &qx::kNoTime, sizeof date) == 0)
        return "-";
    char text[64];
    std::snprintf(text, sizeof text, "%d-%d-%d %d:%d:%d", date.wYear, date.wMonth, date.wDay, date.wHour, date.wMinute,
        date.wSecond);
    return text;
}

// All texts and dates of a record, for comparisons.
inline std::string Summary(const qx::clsDocu& record)
{
    std::string all;
    for (const qx::clsVariant* const field :
        {&record.Title, &record.Subject, &record.Author, &record.LastAuthor, &record.Keywords, &record.Comments})
        all += TextOf(*field) + "|";
    return all + DateOf(record.Created) + "|" + DateOf(record.LastSaved);
}

} // namespace qxtest
