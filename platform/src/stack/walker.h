// Walks the frames of a stack, from a context outwards.
#pragma once

#include <winnt.h>

EXTERN_C_START

// Replaces the registers of a function in `context` by the registers of its caller, as they are after the return. The
// caller's Rsp (Sp) is also the canonical frame address of the function that was left. Registers that the function
// doesn't preserve keep their values.
//
// `isExact` states what the program counter is. TRUE: the address of the next instruction, as in the first frame and in
// a frame that a signal interrupted. FALSE: a return address, so the call is the instruction before it. The function
// reads the value for the given frame and stores the value for the caller's frame.
//
// Returns FALSE if the frame is the outermost one or if the stack is damaged; both arguments are unchanged then. Never
// faults, whatever the registers are: memory other than the tables of loaded modules is read by the kernel. Takes no
// lock and allocates nothing. A damaged stack may contain a cycle, so callers must limit the number of frames.
BOOL WINAPI QxUnwindFrame(CONTEXT* context, BOOL* isExact) QXP(QxUnwindFrame);

EXTERN_C_END
