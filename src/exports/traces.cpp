// The recording of markers.
#include <qxut23/traces.h>

#include "core/errors/failure_text.h"
#include "core/text/string.h"
#include "diag/marker_provider.h"
#include "exports/guard.h"

#include <windows.h>

using namespace qx;

namespace
{

constexpr wchar_t kStart[] = L"the recording can't be started";

std::int32_t WithText(const wchar_t* failed, DWORD error)
{
    if (error != ERROR_SUCCESS)
        SetFailureText(String(String::kFormatted, L"%s: %s", failed, String::SystemErrorText(error).Text()));
    return static_cast<std::int32_t>(error);
}

} // namespace

std::int32_t QxTraceStart(const QXWCHAR* path, std::int32_t allow)
{
    return Guarded(std::int32_t{ERROR_NOT_ENOUGH_MEMORY},
        [=]
        {
            auto& start = AdvAPI32().p_QxStartTrace;
            if (!start.IsThere())
                return WithText(kStart, ERROR_NOT_SUPPORTED);
            if (const LSTATUS status = allow ? AllowMarkers() : ERROR_SUCCESS; status != ERROR_SUCCESS)
                return WithText(L"the user's settings can't be written", static_cast<DWORD>(status));
            return WithText(kStart, start(path, 0));
        });
}

std::int32_t QxTraceStop(QXWCHAR* path, std::size_t capacity)
{
    return Guarded(std::int32_t{ERROR_NOT_ENOUGH_MEMORY},
        [=]
        {
            auto& stop = AdvAPI32().p_QxStopTrace;
            const auto size = static_cast<DWORD>(capacity < 0x10000 ? capacity : 0x10000);
            return WithText(L"the recording can't be stopped", stop.IsThere() ? stop(path, size) : ERROR_NOT_SUPPORTED);
        });
}
