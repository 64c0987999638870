// Conversion of dates to text.
#include <oleauto.h>

#include <cmath>

#include "base/text.h"
#include "time/date_format.h"
#include "time/date_reader.h"

using namespace qxplatform;

namespace
{

// The date used for a text that contains only a time: the day with the number 0.
constexpr SYSTEMTIME kDateOfTimes{1899, 12, 6, 30, 0, 0, 0, 0};

SYSTEMTIME WithDateOf(const SYSTEMTIME& date, const SYSTEMTIME& time)
{
    return {date.wYear, date.wMonth, date.wDayOfWeek, date.wDay, time.wHour, time.wMinute, time.wSecond, 0};
}

} // namespace

HRESULT WINAPI VarDateFromStr(const OLECHAR* strIn, LCID lcid, ULONG dwFlags, DATE* pdateOut)
{
    const Locale* const locale = FindLocale(lcid);
    if (strIn == nullptr || pdateOut == nullptr || locale == nullptr || dwFlags != 0)
        return E_INVALIDARG;
    ReadDate read;
    if (!ReadDateText(View(strIn), *locale, read))
        return DISP_E_TYPEMISMATCH;
    SYSTEMTIME time = WithDateOf(read.hasDate ? read.time : kDateOfTimes, read.time);
    return SystemTimeToVariantTime(&time, pdateOut) ? S_OK : DISP_E_OVERFLOW;
}

HRESULT WINAPI VarBstrFromDate(DATE dateIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut)
{
    const Locale* const locale = FindLocale(lcid);
    SYSTEMTIME time;
    if (pbstrOut == nullptr || locale == nullptr || dwFlags != 0 || !VariantTimeToSystemTime(dateIn, &time))
        return E_INVALIDARG;
    const bool showsDate = std::trunc(dateIn) != 0;
    const bool showsTime = !showsDate || std::trunc(dateIn) != dateIn;
    const Pictures& pictures = PicturesOf(*locale);
    std::u16string text = showsDate ? FormatDate(pictures.shortDate, time, *locale) : std::u16string();
    if (showsTime)
        text += (showsDate ? u" " : u"") + FormatTime(pictures.time, time, pictures, 0);
    *pbstrOut = SysAllocStringLen(Wide(text), static_cast<UINT>(text.size()));
    return *pbstrOut != nullptr ? S_OK : E_OUTOFMEMORY;
}
