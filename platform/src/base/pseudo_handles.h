// The pseudo handles of the calling process and thread, which are not in the table.
#pragma once

#include "base/object.h"

#include <minwindef.h>

namespace qxplatform
{

bool IsPseudoHandle(HANDLE handle);

// Returns true if a handle, pseudo or not, refers to this process.
bool IsCurrentProcess(HANDLE handle);

// Returns the object behind a pseudo handle, for example to duplicate it.
Ref<Object> PseudoHandleObject(HANDLE handle);

} // namespace qxplatform
