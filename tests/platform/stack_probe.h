// The interface of the library through which the tests of the stack call.
#pragma once

namespace qxtest
{

// The return addresses of the functions that are running, outermost first. The functions themselves record them.
struct ProbeFrames
{
    static constexpr unsigned kMost = 64;

    void* address[kMost] = {};
    unsigned count = 0;
    void (*callback)(ProbeFrames&) = nullptr; // called by the innermost function

    void Note(void* returnAddress) { address[count++] = returnAddress; }
};

using ProbeFunction = void (*)(ProbeFrames&);

} // namespace qxtest
