// What differs between the terminals of the targets.
#pragma once

#include <string>
#include <vector>

namespace qxut
{

// The arguments of the program without its own name, in UTF-8; from here on the terminal takes UTF-8.
std::vector<std::string> StartTerminal(int argc, char** argv);

// The standard streams carry bytes as they are, line ends included.
void MakeStandardStreamsBinary();

// Whether the standard output is a terminal that shows colours, and nobody asked to have none (NO_COLOR).
bool TerminalHasColours();

// Whether someone looks at the standard error stream.
bool ErrorsGoToTerminal();

} // namespace qxut
