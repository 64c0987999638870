// Enters COM on the calling thread.
#pragma once

#include <windows.h>

#include <objbase.h>

#include <cstdint>

namespace qx
{

// The base of guards that enter COM or OLE.
class clsCOMorOLEInitialize
{
public:
    clsCOMorOLEInitialize() = default;
    clsCOMorOLEInitialize(const clsCOMorOLEInitialize&) = delete;
    clsCOMorOLEInitialize& operator=(const clsCOMorOLEInitialize&) = delete;
    virtual ~clsCOMorOLEInitialize() = default;
};

// Enters a single-threaded apartment for the lifetime of the object. The machine's settings may leave COM to the host
// program: the value "ApartmentModel" is 999 then.
class clsCOMInitialize : public clsCOMorOLEInitialize
{
public:
    clsCOMInitialize();
    ~clsCOMInitialize() override;

    // Returns false if this object tried to enter COM and failed.
    bool IsUsable() const { return _model == _leaveAlone || SUCCEEDED(_result); }

private:
    std::uint32_t Model();

    // The order of the fields is part of the interface.
    const std::uint32_t _notRead = 9999;
    const std::uint32_t _leaveAlone = 999;
    std::uint32_t _model = 9999;
    HRESULT _result = E_UNEXPECTED;
};

} // namespace qx
