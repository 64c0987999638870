#include "locale/locale_date_info.h"

#include "core/forever.h"

namespace qx
{

namespace
{

String SeparatorOf(LCID locale, LCTYPE type, const wchar_t* substitute)
{
    wchar_t separator[10];
    String text = GetLocaleInfoW(locale, type, separator, 10) > 0 ? separator : substitute;
    text.Replace(L' ', 0);
    return text;
}

// Returns the order of the date's parts in a locale. The system's value 0 means month-day-year.
DateOrder OrderOf(LCID locale)
{
    wchar_t order[10];
    if (GetLocaleInfoW(locale, LOCALE_IDATE, order, 10) <= 0)
        return DateOrder::DayMonthYear;
    switch (order[0])
    {
    case L'0':
        return DateOrder::MonthDayYear;
    case L'2':
        return DateOrder::YearMonthDay;
    default:
        return DateOrder::DayMonthYear;
    }
}

} // namespace

clsLocaleDateInfo::clsLocaleDateInfo(LCID locale)
    : lcid(locale),
      dateOrder(OrderOf(locale)),
      dateSeparator(SeparatorOf(locale, LOCALE_SDATE, L".")),
      timeSeparator(SeparatorOf(locale, LOCALE_STIME, L":"))
{
}

const clsLocaleDateInfo& DefaultDateInfo()
{
    static const clsLocaleDateInfo& info = MakeForever<clsLocaleDateInfo>(GetUserDefaultLCID());
    return info;
}

} // namespace qx
