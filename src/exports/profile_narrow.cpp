// The 8-bit forms of the profile functions.
#include <qxut23/profile.h>

#include "exports/narrow.h"

#include <cstdint>

using qx::NarrowForm;

HPROFJOB ProfJobOpenA(const char* name)
{
    return NarrowForm<ProfJobOpenW>::Call(name);
}

HPROFJOB ProfJobOpenExclusiveA(const char* name)
{
    return NarrowForm<ProfJobOpenExclusiveW>::Call(name);
}

HPROFJOB ProfJobOpenStreamObjectA(IStream* stream, const char* name, std::uint32_t level)
{
    return NarrowForm<ProfJobOpenStreamObjectW>::Call(stream, name, level);
}

std::int32_t ProfSaveA(HPROFJOB job, const char* name, std::int32_t flags)
{
    return NarrowForm<ProfSaveW, PROF_ERR_CANNOT_WRITE>::Call(job, name, flags);
}

HPROFLIST ProfGetListA(HPROFJOB job, HPROFLIST list, const char* path)
{
    return NarrowForm<ProfGetListW>::Call(job, list, path);
}

HPROFLIST ProfCreateListA(HPROFJOB job, HPROFLIST list, const char* path)
{
    return NarrowForm<ProfCreateListW>::Call(job, list, path);
}

HPROFLIST ProfAppendListA(HPROFJOB job, HPROFLIST list, const char* path)
{
    return NarrowForm<ProfAppendListW>::Call(job, list, path);
}

void ProfDeleteListA(HPROFJOB job, HPROFLIST list, const char* path)
{
    NarrowForm<ProfDeleteListW>::Call(job, list, path);
}

void ProfDeleteItemA(HPROFJOB job, HPROFLIST list, const char* path)
{
    NarrowForm<ProfDeleteItemW>::Call(job, list, path);
}

std::int32_t ProfEnumA(HPROFJOB job, HPROFLIST list, ProfEnumCallbackA callback, void* context)
{
    return NarrowForm<ProfEnumW, 0>::Call(job, list, callback, context);
}

std::int32_t ProfGetStringA(
    HPROFJOB job, HPROFLIST list, const char* path, char* buffer, std::int32_t size, const char* defaultValue)
{
    return NarrowForm<ProfGetStringW, PROF_ERR_STOPPED>::Call(job, list, path, buffer, size, defaultValue);
}

std::int32_t ProfGetStringLengthA(HPROFJOB job, HPROFLIST list, const char* path)
{
    return NarrowForm<ProfGetStringLengthW, PROF_ERR_STOPPED>::Call(job, list, path);
}

void ProfSetStringA(HPROFJOB job, HPROFLIST list, const char* path, const char* value)
{
    NarrowForm<ProfSetStringW>::Call(job, list, path, value);
}

void ProfAppendStringA(HPROFJOB job, HPROFLIST list, const char* path, const char* value)
{
    NarrowForm<ProfAppendStringW>::Call(job, list, path, value);
}
