// Helpers shared by the tests of the stack.
#pragma once

#include "stack_probe.h"
#include "threads_support.h"

#include <vector>

namespace qxtest
{

using Addresses = std::vector<void*>;

[[gnu::noinline]] inline Addresses CapturedAddresses()
{
    Addresses addresses(100);
    addresses.resize(RtlCaptureStackBackTrace(0, 100, addresses.data(), nullptr));
    return addresses;
}

class ProbeLibrary
{
public:
    explicit ProbeLibrary(const char* name)
        : module(LoadLibraryW(Text::Widen(std::string(QXUT_STACK_PROBE_FOLDER "/") + name)))
    {
    }
    ProbeLibrary(const ProbeLibrary&) = delete;
    ProbeLibrary& operator=(const ProbeLibrary&) = delete;
    ~ProbeLibrary() { FreeLibrary(module); }

    ProbeFunction Function() const { return reinterpret_cast<ProbeFunction>(GetProcAddress(module, "Probe")); }

    HMODULE module;
};

} // namespace qxtest
