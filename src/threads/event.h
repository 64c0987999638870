// An event of the system's.
#pragma once

#include "files/handle_holder.h"

namespace qx
{

// Unset at first, without a name.
class clsEvent : public clsGenericHandleObjectAutoRelease
{
public:
    enum class Kind
    {
        ManualReset,
        AutoReset // by the one wait that it ends
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
