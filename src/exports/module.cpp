#include <qxut23/module.h>

#include "core/errors/assertion.h"
#include "exports/guard.h"
#include "module/environment_type.h"
#include "module/language.h"
#include "module/version.h"

#include <windows.h>

#include <cstdint>

using namespace qx;

std::int32_t UtilGetVersion(std::int32_t which)
{
    switch (which)
    {
    case QXUT_VERSION_ALL:
        return QX_VERSION_MAJOR << 16 | QX_VERSION_MINOR;
    case QXUT_VERSION_MAJOR:
        return QX_VERSION_MAJOR;
    case QXUT_VERSION_MINOR:
        return QX_VERSION_MINOR;
    case QXUT_VERSION_PATCH:
        return QX_VERSION_PATCH;
    default:
        return -1;
    }
}

std::int32_t UtilLanguageGet(void)
{
    return Guarded(1, GetLanguage);
}

std::int32_t UtilLanguageSet(std::int32_t code)
{
    return Guarded(ERROR_NOT_ENOUGH_MEMORY, [=] { return SetLanguage(code); });
}

void UtilAssert(const QXWCHAR* expression, const QXWCHAR* file, std::uint32_t line)
{
    const bool goesOn = Guarded(false, [=] { return Assert(expression, file, line), true; });
    if (!goesOn) // an exception, such as a lack of memory, kept the box from being shown
        EndAfterAssertion();
}

std::int32_t UtilGetOSEnvironmentType(void)
{
    return Guarded(QXUT_ENVIRONMENT_UNKNOWN, [] { return static_cast<std::int32_t>(GetOSEnvironmentType()); });
}

std::int32_t UtilGetUIInteractionAllowed(void)
{
    return Guarded(0, [] { return static_cast<std::int32_t>(GetUIInteractionAllowed()); });
}
