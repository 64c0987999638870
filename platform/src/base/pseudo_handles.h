// The handles that name the calling process and thread without standing in the table.
#pragma once

#include "base/object.h"

#include <minwindef.h>

namespace qxplatform
{

bool IsPseudoHandle(HANDLE handle);

// Whether a handle, pseudo or not, stands for this process.
bool IsCurrentProcess(HANDLE handle);

// The object that a pseudo handle stands for, such as a duplicate of it needs.
Ref<Object> PseudoHandleObject(HANDLE handle);

} // namespace qxplatform
