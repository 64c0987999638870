// Loads arbitrary bytes. The resulting tree must be writable, and must be loaded unchanged from the output.
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
    // A stream object is read back one list deeper, so the results can't be compared.
    const JobHolder object = NewStreamObject();
    Load(*object, source);
    Saved(*object, ProfForm::Text);
    return 0;
}
