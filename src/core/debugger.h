#pragma once

namespace qx
{

// Writes the return addresses of the calling thread, nearest first, to the debug output.
using StackTraceHook = void (*)(int frames);

// The stack tools stand above the classes that ask for a trace, and enter themselves here. Gives the former hook.
StackTraceHook SetStackTraceHook(StackTraceHook hook);

// What a failure does that only a programming fault can cause: stops under a debugger (whose presence is asked for once
// and remembered), else writes a stack trace of so many frames. The program goes on.
void BreakOrTrace(int frames);

// Makes the next failure ask for the debugger again.
void ForgetDebuggerTest();

} // namespace qx
