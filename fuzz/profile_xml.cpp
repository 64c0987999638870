// Parses arbitrary lines after the head by the XML rules, in 16 bits. The resulting tree must be writable in each form,
// and its leaves must be loaded unchanged from the XML form. (A list name that begins with a bracket loses it each
// time.)
#include "prof/xml_form.h"
#include "profile_fuzz.h"

#include <cstdint>

using namespace profilefuzz;
using qx::ProfForm;

namespace
{

void Append(Bytes& bytes, std::wstring_view text)
{
    const auto* first = reinterpret_cast<const std::uint8_t*>(text.data());
    bytes.insert(bytes.end(), first, first + text.size() * sizeof(wchar_t));
}

// Returns the lines of leaves, which begin with "<i" after their indentation.
std::vector<std::wstring_view> Leaves(const Bytes& saved)
{
    std::vector<std::wstring_view> leaves;
    std::wstring_view rest(reinterpret_cast<const wchar_t*>(saved.data()), saved.size() / sizeof(wchar_t));
    while (!rest.empty())
    {
        const std::wstring_view line = rest.substr(0, rest.find(L'\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        const std::size_t begin = line.find_first_not_of(L" \t");
        if (begin != std::wstring_view::npos && line.substr(begin).starts_with(L"<i"))
            leaves.push_back(line);
    }
    return leaves;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Bytes source;
    Append(source, L"\xFEFF");
    Append(source, qx::kXmlFirstLine);
    Append(source, L"\r\n");
    source.insert(source.end(), data, data + size);
    const JobHolder job = NewJob();
    Load(*job, source);
    Saved(*job, ProfForm::Xfdf);
    const Bytes once = Saved(*job, ProfForm::Xml);
    const Bytes twice = SavedAgain(once, ProfForm::Xml);
    if (Leaves(once) != Leaves(twice))
        std::abort();
    return 0;
}
