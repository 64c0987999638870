// Opens profiles with options, and reports what was found in their files.
#include <qxut23/profile_source.h>

#include "exports/guard.h"
#include "exports/profile_handle.h"

#include <cstdint>

using namespace qx;

static_assert(QXUT_SOURCE_FORM == kProfFormMask && QXUT_SOURCE_PACKED == kSourcePacked &&
              QXUT_SOURCE_FOREIGN == kSourceForeign && QXUT_SOURCE_INI == kSourceIni &&
              QXUT_SOURCE_TRUNCATED == kSourceTruncated && QXUT_SOURCE_COMMENTS == kSourceComments &&
              QXUT_SOURCE_IGNORED == kSourceIgnored && QXUT_SOURCE_FLATTENED == kSourceFlattened &&
              QXUT_SOURCE_TOO_LARGE == kSourceTooLarge && QXUT_SOURCE_DAMAGED == kSourceDamaged);

HPROFJOB QxProfJobOpen(const QXWCHAR* name, std::uint32_t flags, std::uint64_t mostUnpacked)
{
    if ((flags & ~(QXUT_PROFILE_EXCLUSIVE | QXUT_PROFILE_ANY_SIZE | QXUT_PROFILE_EXISTING)) != 0)
        return kInvalidJob;
    return OpenJob(
        [=](clsProfJob& job)
        {
            if ((flags & QXUT_PROFILE_ANY_SIZE) != 0)
                job.SetUnpackLimit(UINT64_MAX);
            else if (mostUnpacked != 0)
                job.SetUnpackLimit(mostUnpacked);
            if ((flags & QXUT_PROFILE_EXISTING) != 0)
                job.ExpectFile();
            job.Open(name);
        },
        (flags & QXUT_PROFILE_EXCLUSIVE) != 0 ? ProfMode::Hold : ProfMode::Read);
}

std::uint32_t QxProfGetSource(HPROFJOB job)
{
    return job == kInvalidJob ? 0 : JobOf(job)->Source();
}
