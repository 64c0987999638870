// Walks with rules that the caller has found elsewhere, for modules without unwind tables in memory.
#pragma once

#include "stack/frame_rule.h"

#include <winnt.h>

EXTERN_C_START

// Returns TRUE if the unwind tables of the loaded modules have a rule for a frame. `isExact` as for QxUnwindFrame.
BOOL WINAPI QxHasFrameRule(const CONTEXT* context, BOOL isExact) QXP(QxHasFrameRule);

// Works like QxUnwindFrame, with a given rule, which must contain no expressions.
BOOL WINAPI QxUnwindFrameByRule(CONTEXT* context, BOOL* isExact, const qxplatform::FrameRule* rule)
    QXP(QxUnwindFrameByRule);

EXTERN_C_END
