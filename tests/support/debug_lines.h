// Captures the debug output of a test.
#pragma once

#include "core/debug_line.h"
#include "core/text/string.h"
#include "core/text/text_format.h"

#include <algorithm>
#include <mutex>
#include <string_view>
#include <vector>

namespace qxtest
{

// Captures the debug lines as long as it exists.
class DebugLines : private qx::DebugLineSink
{
public:
    struct Entry
    {
        int indentChange;
        qx::String text;
    };

    DebugLines() : _former(qx::SetDebugLineSink(this)) {}
    DebugLines(const DebugLines&) = delete;
    DebugLines& operator=(const DebugLines&) = delete;
    ~DebugLines() { qx::SetDebugLineSink(_former); }

    std::vector<Entry> Entries() const
    {
        const std::lock_guard lock(_mutex);
        return _entries;
    }

    std::size_t Count() const { return Entries().size(); }

    std::size_t CountOf(std::wstring_view part) const
    {
        const auto entries = Entries();
        return static_cast<std::size_t>(std::count_if(entries.begin(), entries.end(),
            [part](const Entry& entry) { return entry.text.View().find(part) != std::wstring_view::npos; }));
    }

    // Returns the last line, or an empty text.
    qx::String Last() const
    {
        const std::lock_guard lock(_mutex);
        return _entries.empty() ? qx::String() : _entries.back().text;
    }

    // Returns the only line, or a text with the number of lines if there isn't exactly one.
    qx::String Only() const
    {
        return Count() == 1 ? Last() : qx::String(qx::String::kFormatted, L"(%d lines)", static_cast<int>(Count()));
    }

private:
    void Line(int indentChange, const wchar_t* format, va_list arguments) override
    {
        // Drops lines written while a line is being captured, as every sink must: the strings used here may write lines
        // themselves.
        static thread_local bool isTaking = false;
        if (isTaking)
            return;
        isTaking = true;
        wchar_t line[1025] = {};
        if (format)
            qx::FormatBounded(line, 1025, format, arguments);
        const std::lock_guard lock(_mutex);
        _entries.push_back({indentChange, qx::String(line)});
        isTaking = false;
    }

    qx::DebugLineSink* _former;
    mutable std::mutex _mutex;
    std::vector<Entry> _entries;
};

} // namespace qxtest
