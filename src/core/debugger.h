#pragma once

namespace qx
{

// Writes the return addresses of the calling thread to the debug output, innermost first.
using StackTraceHook = void (*)(int frames);

// Sets the stack trace hook and returns the previous one. The stack tools are in a higher layer than the classes that
// request a trace, so they register themselves here.
StackTraceHook SetStackTraceHook(StackTraceHook hook);

// Reports a failure that only a programming error can cause. Breaks into the debugger if one is attached (checked once
// and cached); otherwise writes a stack trace of at most `frames` frames. Returns in both cases.
void BreakOrTrace(int frames);

// Breaks into the debugger if one is attached. Otherwise does nothing.
void BreakIfDebugged();

// Makes the next failure check for a debugger again.
void ForgetDebuggerTest();

} // namespace qx
