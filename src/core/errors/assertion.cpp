#include "core/errors/assertion.h"

#include <windows.h>

namespace qx
{
namespace
{

constexpr std::size_t kLongestText = 80;

const wchar_t* OrEmpty(const wchar_t* text)
{
    return text ? text : L"";
}

} // namespace

String AssertionText(const wchar_t* expression, const wchar_t* file, unsigned line)
{
    // Appends the parts one by one, because Format would truncate the text to its estimate.
    String text(String::kFormatted, L"line %u in file ", line);
    text.Append(OrEmpty(file));
    text.Append(L":\n\"");
    text.Append(OrEmpty(expression));
    text.Append(L'"');
    return text.Left(kLongestText);
}

void Assert(const wchar_t* expression, const wchar_t* file, unsigned line)
{
    const int answer = MessageBoxW(nullptr, AssertionText(expression, file, line), L"Assertion Failure",
        MB_TASKMODAL | MB_ICONERROR | MB_RETRYCANCEL);
    if (answer != IDOK)
        EndAfterAssertion();
}

void EndAfterAssertion()
{
    ExitProcess(static_cast<UINT>(-1));
}

} // namespace qx
