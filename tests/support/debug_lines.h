// The debug output of a test that expects one line at a time.
#pragma once

#include "support/debug_line_capture.h"

namespace qxtest
{

class DebugLines : public qx::DebugLineCapture
{
public:
    // The text of the only line there is; says what is wrong otherwise.
    qx::String Only() const
    {
        return Count() == 1 ? Last() : qx::String(qx::String::formatted, L"(%d lines)", static_cast<int>(Count()));
    }
};

} // namespace qxtest
