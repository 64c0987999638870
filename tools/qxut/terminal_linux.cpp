#include "terminal.h"

#include <cstdlib>
#include <string_view>

#include <unistd.h>

namespace qxut
{

std::vector<std::string> StartTerminal(int argc, char** argv)
{
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

void MakeStandardStreamsBinary() {}

bool TerminalHasColours()
{
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) != 0 && terminal != nullptr && std::string_view(terminal) != "dumb" &&
           std::getenv("NO_COLOR") == nullptr;
}

bool ErrorsGoToTerminal()
{
    return isatty(STDERR_FILENO) != 0;
}

} // namespace qxut
