// What the rules of form data make of any lines behind the head: the leaves that come out can be written, and come back
// as they are.
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
    // Characters that XML can't hold are replaced once.
    const Bytes once = SavedAgain(Saved(*job, ProfForm::Xfdf), ProfForm::Xfdf);
    if (SavedAgain(once, ProfForm::Xfdf) != once)
        std::abort();
    return 0;
}
