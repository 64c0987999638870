// The lists of all kinds of handles.
#pragma once

#include "handles/handle_list.h"

#include <cstdint>

namespace qx
{

enum class HandleOperation : std::int32_t
{
    Report = 0,
    Add = 1,
    Remove = 2,
    Count = 3,
    Contains = 4,
    TakeSnapshot = 10,
    Compare = 11
};

// Kinds are the values of GetObjectType; negative ones count as 0. Kinds above 65,535 and unknown operations do nothing
// and return 0.
std::uint32_t ManageHandles(std::int32_t kind, HandleOperation operation, HandleValue handle);

// Reports the handles of all lists that have not been reported. Called when the library is unloaded.
void ReportLostHandles();

} // namespace qx
