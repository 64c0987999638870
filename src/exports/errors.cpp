// The text of the last failure.
#include <qxut23/errors.h>

#include "core/errors/failure_text.h"
#include "exports/guard.h"

using namespace qx;

std::int32_t QxGetErrorText(QXWCHAR** text)
{
    if (!text)
        return 0;
    return Guarded(0,
        [=]
        {
            const String failure = FailureText();
            return !failure.IsEmpty() && failure.ToBSTR(text) ? 1 : 0;
        });
}
