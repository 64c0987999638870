// A system event.
#pragma once

#include "files/handle_holder.h"

namespace qx
{

// An unnamed event, initially not signalled.
class clsEvent : public clsGenericHandleObjectAutoRelease
{
public:
    enum class Kind
    {
        ManualReset,
        AutoReset // reset by the wait that it releases
    };

    explicit clsEvent(Kind kind = Kind::ManualReset)
        : clsGenericHandleObjectAutoRelease(CreateEventW(nullptr, kind == Kind::ManualReset, FALSE, nullptr), true)
    {
    }
    ~clsEvent() override = default;

    void Set() { SetEvent(Get()); }
    void Reset() { ResetEvent(Get()); }
    bool IsSet() const { return WaitForSingleObject(Get(), 0) == WAIT_OBJECT_0; }
};

} // namespace qx
