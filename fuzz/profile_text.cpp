// What the loader makes of any bytes: whatever tree comes out can be written, and what was written comes back as it is.
#include "profile_fuzz.h"

#include <cstdint>

using namespace profilefuzz;
using qx::ProfForm;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Bytes source(data, data + size);
    const JobHolder job = NewJob();
    Load(*job, source);
    const Bytes once = Saved(*job, ProfForm::Text);
    if (SavedAgain(once, ProfForm::Text) != once)
        std::abort();
    // A stream object comes back one list deeper, so there is nothing to compare with.
    const JobHolder object = NewStreamObject();
    Load(*object, source);
    Saved(*object, ProfForm::Text);
    return 0;
}
