// The progress of a lengthy diagnostic operation, shown by the control library.
#pragma once

#include "core/text/string.h"
#include "module/late_libraries.h"

#include <cstdint>

namespace qx
{

// The progress dialog of one operation. Without the control library nothing is shown, and every operation counts as
// aborted.
class clsLengthyOp
{
public:
    clsLengthyOp(const String& firstText, const String& secondText);
    clsLengthyOp(const clsLengthyOp&) = delete;
    clsLengthyOp& operator=(const clsLengthyOp&) = delete;
    virtual ~clsLengthyOp();

    // Shows the second text and, on the next line, `text`.
    void SetText(const String& text);

    // `percent` is from 0 to 100.
    void SetProgress(std::uint32_t percent);

    // Returns true if the user asked to abort.
    bool CheckAbort();

private:
    clsTrlmCTL _library;
    std::int64_t _job = 0;
    std::int64_t _dialog = -1;
    String _firstText;
    String _secondText;
};

} // namespace qx
