#include "terminal.h"

namespace qxut
{

std::vector<std::string> StartTerminal(int argc, char** argv)
{
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

void MakeStandardStreamsBinary() {}

} // namespace qxut
