// Uses the debug-help service of another copy of the library.
#pragma once

#include "module/sibling_library.h"

#include <cstdint>

namespace qx
{

struct ForeignDebugHelpJob;

class clsUTILForDebugHelpWrapper : public CSiblingLibrary
{
public:
    clsUTILForDebugHelpWrapper() : CSiblingLibrary(L"TRLMUTIL", L"ut") {}

    LateFunction<ForeignDebugHelpJob*()> p_UtilDebugHelpJobOpen{*this, L"p_UtilDebugHelpJobOpen"};
    LateFunction<void(ForeignDebugHelpJob*, std::uint32_t, std::uint32_t)> p_UtilDebugHelpSetOption{
        *this, L"p_UtilDebugHelpSetOption", 12};
    LateFunction<void(ForeignDebugHelpJob*)> p_UtilDebugHelpJobClose{*this, L"p_UtilDebugHelpJobClose", 4};
    LateFunction<std::int32_t()> p_UtilGetUIInteractionAllowed{*this, L"p_UtilGetUIInteractionAllowed"};
};

// A job of that service. If its functions can't be bound, there is no job.
class clsUtilDebugHelpWrapper
{
public:
    clsUtilDebugHelpWrapper();
    clsUtilDebugHelpWrapper(const clsUtilDebugHelpWrapper&) = delete;
    clsUtilDebugHelpWrapper& operator=(const clsUtilDebugHelpWrapper&) = delete;
    ~clsUtilDebugHelpWrapper();

    ForeignDebugHelpJob* Job() const { return _job; }

private:
    clsUTILForDebugHelpWrapper _library;
    ForeignDebugHelpJob* _job = nullptr;
};

} // namespace qx
