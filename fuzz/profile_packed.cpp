// Packed profiles: any data after the magic produces a tree, which must survive saving and loading in packed form.
#include "profile_fuzz.h"

#include <cstdint>

using namespace profilefuzz;
using qx::ProfForm;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Bytes source{'Z', 'x', 'v', 'Q'};
    source.insert(source.end(), data, data + size);
    const JobHolder job = NewJob();
    Load(*job, source);
    const Bytes plain = Saved(*job, ProfForm::Text);
    const JobHolder again = NewJob();
    if (!plain.empty() && !Load(*again, plain))
        std::abort();
    const Bytes packed = Saved(*again, ProfForm::Text, qx::kProfSavePacked);
    if (SavedAgain(packed, ProfForm::Text) != SavedAgain(plain, ProfForm::Text))
        std::abort();
    return 0;
}
