// Terminal functions that differ between the targets.
#pragma once

#include "secret.h"

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

// Returns true if the standard output is a terminal.
bool OutputGoesToTerminal();

// Returns true if the standard error stream is a terminal.
bool ErrorsGoToTerminal();

// Reads a byte of an open file descriptor. Returns 1, 0 at the end, or -1 on failure.
int ReadByte(int descriptor, char& byte);

enum class Answer
{
    Given,
    TooLong,
    NoTerminal
};

// Asks on the terminal of the process, even if the standard streams are redirected, and appends the answer to `line`.
// The answer isn't shown while it is typed.
Answer AskSecretly(const char* question, SecretLine& line);

} // namespace qxut
