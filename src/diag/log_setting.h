// Changes the machine's settings of the log file. DebugLogFile reads them.
#pragma once

#include <windows.h>

namespace qx
{

inline constexpr wchar_t kSettingsKey[] = L"software\\trelmo"; // in HKEY_LOCAL_MACHINE
inline constexpr wchar_t kLogFileValue[] = L"Debug.LogFilename";
inline constexpr wchar_t kLogFlushValue[] = L"Debug.LogFile.Flush";

// Stores the name of the log file, and whether each line is written through to the disk. A null or empty name switches
// the log off. Returns a code of the system.
LSTATUS StoreLogSetting(const wchar_t* name, bool isFlushed);

} // namespace qx
