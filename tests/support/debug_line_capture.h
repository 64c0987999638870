#pragma once

#include "core/debug_line.h"
#include "core/string.h"
#include "core/text_format.h"

#include <algorithm>
#include <mutex>
#include <string_view>
#include <vector>

namespace qx
{

// Takes the debug lines for as long as it lives.
class DebugLineCapture : private DebugLineSink
{
public:
    struct Entry
    {
        int indentChange;
        String text;
    };

    DebugLineCapture() : _former(SetDebugLineSink(this)) {}
    DebugLineCapture(const DebugLineCapture&) = delete;
    DebugLineCapture& operator=(const DebugLineCapture&) = delete;
    ~DebugLineCapture() { SetDebugLineSink(_former); }

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

    // The last line, or an empty text.
    String Last() const
    {
        const std::lock_guard lock(_mutex);
        return _entries.empty() ? String() : _entries.back().text;
    }

private:
    void Line(int indentChange, const wchar_t* format, va_list arguments) override
    {
        // A line written while one is taken is dropped, as every sink must do: the strings of this one may cause it.
        static thread_local bool isTaking = false;
        if (isTaking)
            return;
        isTaking = true;
        wchar_t line[1025] = {};
        if (format)
            FormatBounded(line, 1025, format, arguments);
        const std::lock_guard lock(_mutex);
        _entries.push_back({indentChange, String(line)});
        isTaking = false;
    }

    DebugLineSink* _former;
    mutable std::mutex _mutex;
    std::vector<Entry> _entries;
};

} // namespace qx
