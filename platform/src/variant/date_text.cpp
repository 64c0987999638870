// Dates as text.
//
// PENDING: the locale's forms of dates and times belong to text/. Until they are there, neither direction has a
// conversion, and both give the error of a text that is no date.
#include <oleauto.h>

HRESULT WINAPI VarDateFromStr(const OLECHAR* /*strIn*/, LCID /*lcid*/, ULONG /*dwFlags*/, DATE* /*pdateOut*/)
{
    return DISP_E_TYPEMISMATCH;
}

HRESULT WINAPI VarBstrFromDate(DATE /*dateIn*/, LCID /*lcid*/, ULONG /*dwFlags*/, BSTR* /*pbstrOut*/)
{
    return DISP_E_TYPEMISMATCH;
}
