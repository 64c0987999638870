// An event of the system's.
#pragma once

#include "files/handle_holder.h"

namespace qx
{

// Manual reset, unset at first, without a name.
class clsEvent : public clsGenericHandleObjectAutoRelease
{
public:
    clsEvent() : clsGenericHandleObjectAutoRelease(CreateEventW(nullptr, TRUE, FALSE, nullptr), true) {}
    ~clsEvent() override = default;

    void Set() { SetEvent(Get()); }
    void Reset() { ResetEvent(Get()); }
    bool IsSet() const { return WaitForSingleObject(Get(), 0) == WAIT_OBJECT_0; }
};

} // namespace qx
