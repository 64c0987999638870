// A document in memory, and the record that a reader fills from it.
#pragma once

#include "docinfo/document_file.h"
#include "docinfo/document_record.h"
#include "files/file_window.h"
#include "support/memory_stream.h"
#include "support/readable_text.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace qxtest
{

// Programs are slower with the sanitizers and in the emulator.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(_WIN32)
constexpr bool kIsSlow = true;
#else
constexpr bool kIsSlow = false;
#endif

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

// Returns all texts and dates of a record, for comparisons.
inline std::string Summary(const qx::clsDocu& record)
{
    std::string all;
    for (const qx::clsVariant* const field :
        {&record.Title, &record.Subject, &record.Author, &record.LastAuthor, &record.Keywords, &record.Comments})
        all += TextOf(*field) + "|";
    return all + DateOf(record.Created) + "|" + DateOf(record.LastSaved);
}

using Reader = int (*)(qx::clsDocu& record, qx::FileWindow& file);

inline qx::clsAutoRelease<qx::clsDocu*> EmptyRecord()
{
    return qx::clsDocu::Create(qx::String(L"in memory"), nullptr, 0, 0);
}

class ReadRecord
{
public:
    ReadRecord(Reader reader, std::string_view bytes)
    {
        const MemoryStream stream(bytes);
        qx::clsDocFile file(stream);
        qx::FileWindow window(file);
        _result = reader(*_record, window);
    }

    int Result() const { return _result; }
    std::string Summary() const { return qxtest::Summary(*_record); }
    std::string ResultAndSummary() const { return std::to_string(_result) + " " + Summary(); }
    qx::clsDocu* operator->() const { return _record.Get(); }

private:
    qx::clsAutoRelease<qx::clsDocu*> _record = EmptyRecord();
    int _result;
};

// Converts a text from the default 8-bit code page.
inline qx::String Wide(const std::string& text)
{
    qx::String wide;
    wide.Assign(text.c_str());
    return wide;
}

// Returns as many repetitions as fit into `size` bytes.
inline std::string Repeat(std::string_view piece, std::size_t size)
{
    std::string text;
    while (text.size() + piece.size() <= size)
        text += piece;
    return text;
}

// Returns the two pieces with a number between them, repeated until they fill `size` bytes.
inline std::string Numbered(std::size_t size, const char* before, const char* behind)
{
    std::string text;
    for (int i = 0; text.size() < size; ++i)
        text.append(before).append(std::to_string(i)).append(behind);
    return text;
}

// Reads bytes that are constructed to be slow. Expects success within a few seconds, even on a busy machine.
inline void ExpectQuick(Reader reader, std::string_view bytes)
{
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(ReadRecord(reader, bytes).Result(), 0);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    EXPECT_LT(seconds.count(), kIsSlow ? 30 : 5) << bytes.substr(0, 60);
}

} // namespace qxtest
