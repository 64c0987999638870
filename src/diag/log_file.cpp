#include "diag/log_file.h"

#include "core/registry/registry.h"
#include "core/ticks.h"
#include "diag/debug_line_text.h"
#include "diag/log_setting.h"
#include "files/file.h"
#include "files/temp_files.h"

#include <windows.h>

#include <wchar.h>

#include <algorithm>
#include <string_view>

namespace qx
{
namespace
{

constexpr unsigned kPatience = 100; // ms
constexpr UINT kSimpleBeep = 0xFFFFFFFF;

// Returns true if the name contains a folder or a drive. Works for names of any length.
bool HasFolder(const String& name)
{
    return name.View().find_first_of(L"\\/") != std::wstring_view::npos || name.CharAt(1) == L':';
}

bool OpenPatiently(clsFileRW& file, const String& name)
{
    const unsigned long long limit = UtilGetTicks() + kPatience;
    while (file.Open(name, FileAccess::Write, FileDisposition::OpenAlways, FileShare::Read, kFileAttributeNormal) != 0)
    {
        // Another attempt is pointless for a pipe or a device.
        if (GetLastError() == ERROR_BAD_FILE_TYPE || UtilGetTicks() >= limit)
            return false;
        Sleep(0);
    }
    return true;
}

} // namespace

DebugLogFile DebugLogFile::FromSettings()
{
    DebugLogFile log;
    clsRegistryList settings(HKEY_LOCAL_MACHINE, kSettingsKey, clsRegistryList::kRead);
    settings.GetString(kLogFileValue, log._name, L"");
    settings.GetBool(kLogFlushValue, log._isFlushed, false);
    if (log.IsSet() && !HasFolder(log._name))
        log._name = GetTempFolder(true) + log._name;
    return log;
}

// Writes the line and its line end in a single call, so that a process that is killed leaves no partial line.
void DebugLogFile::Append(const wchar_t* line, std::size_t length) const
{
    clsFileRW file;
    if (!OpenPatiently(file, _name))
    {
        MessageBeep(kSimpleBeep);
        return;
    }
    wchar_t bytes[DebugLineText::kCapacity + 2];
    length = std::min(length, DebugLineText::kCapacity);
    wmemcpy(bytes, line, length);
    bytes[length] = L'\r';
    bytes[length + 1] = L'\n';
    file.Seek(file.GetSize());
    file.WriteChars(bytes, length + 2);
    if (_isFlushed)
        FlushFileBuffers(file.GetHandle());
}

} // namespace qx
