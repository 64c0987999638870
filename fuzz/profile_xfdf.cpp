// Parses arbitrary lines after the head as form data. The resulting leaves must be writable, and must be loaded
// unchanged from the output.
#include "profile_fuzz.h"

#include <cstdint>

using namespace profilefuzz;
using qx::ProfForm;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::string_view kFirstLine = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";
    Bytes source(kFirstLine.begin(), kFirstLine.end());
    source.insert(source.end(), data, data + size);
    const JobHolder job = NewJob();
    Load(*job, source);
    Saved(*job, ProfForm::Xml);
    // Characters that XML can't represent are replaced once.
    const Bytes once = SavedAgain(Saved(*job, ProfForm::Xfdf), ProfForm::Xfdf);
    if (SavedAgain(once, ProfForm::Xfdf) != once)
        std::abort();
    return 0;
}
