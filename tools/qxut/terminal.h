// Terminal functions that differ between the targets.
#pragma once

#include <string>
#include <vector>

namespace qxut
{

// Returns the program's arguments, without its own name, in UTF-8. Switches the terminal to UTF-8.
std::vector<std::string> StartTerminal(int argc, char** argv);

// Switches the standard streams to binary mode, without conversion of line ends.
void MakeStandardStreamsBinary();

// Returns true if the standard output is a terminal that shows colours and NO_COLOR is not set.
bool TerminalHasColours();

// Returns true if the standard error stream is a terminal.
bool ErrorsGoToTerminal();

} // namespace qxut
