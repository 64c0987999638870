// Handle tracking.
#include <qxut23/handles.h>

#include "exports/guard.h"
#include "handles/handle_lists.h"

#include <cstdint>

using namespace qx;

static_assert(QXUT_HANDLES_REPORT == static_cast<int>(HandleOperation::Report) &&
              QXUT_HANDLES_ADD == static_cast<int>(HandleOperation::Add) &&
              QXUT_HANDLES_REMOVE == static_cast<int>(HandleOperation::Remove) &&
              QXUT_HANDLES_COUNT == static_cast<int>(HandleOperation::Count) &&
              QXUT_HANDLES_CONTAINS == static_cast<int>(HandleOperation::Contains) &&
              QXUT_HANDLES_SNAPSHOT == static_cast<int>(HandleOperation::TakeSnapshot) &&
              QXUT_HANDLES_COMPARE == static_cast<int>(HandleOperation::Compare));

std::uint32_t UtilHandleListMgr(std::int32_t kind, std::int32_t operation, const void* handle)
{
    return Guarded(std::uint32_t{0},
        [=] {
            return ManageHandles(kind, static_cast<HandleOperation>(operation), reinterpret_cast<HandleValue>(handle));
        });
}
