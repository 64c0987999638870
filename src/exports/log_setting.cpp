// The machine's settings of the log file.
#include <qxut23/log_setting.h>

#include "core/errors/failure_text.h"
#include "core/text/string.h"
#include "diag/debug_stamp.h"
#include "diag/log_file.h"
#include "diag/log_setting.h"
#include "exports/guard.h"

#include <windows.h>

#include <wchar.h>

#include <cstddef>
#include <cstdint>

using namespace qx;

std::size_t QxGetLogSetting(QXWCHAR* path, std::size_t capacity, std::uint32_t* flags)
{
    if (capacity > 0)
        *path = 0;
    if (flags)
        *flags = 0;
    return Guarded(std::size_t{0},
        [=]
        {
            const DebugLogFile log = DebugLogFile::FromSettings();
            const std::size_t length = log.Name().Length();
            if (length < capacity)
                wmemcpy(path, log.Name().Text(), length + 1);
            if (flags)
                *flags = (log.IsFlushed() ? QXUT_LOG_FLUSH : 0) | (IsCounterForced() ? QXUT_LOG_COUNTER : 0);
            return length;
        });
}

std::int32_t QxSetLogSetting(const QXWCHAR* name, std::uint32_t flags)
{
    return Guarded(0,
        [=]
        {
            const LSTATUS status = StoreLogSetting(name, (flags & QXUT_LOG_FLUSH) != 0);
            if (status == ERROR_SUCCESS)
                return 1;
            const auto error = static_cast<DWORD>(status);
            SetFailureText(String(String::kFormatted, L"the machine's settings can't be written: %s",
                String::SystemErrorText(error).Text()));
            SetLastError(error);
            return 0;
        });
}
