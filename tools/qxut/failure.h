// Exit codes, and the exception that ends the program with a message.
#pragma once

#include <stdexcept>
#include <string>

namespace qxut
{

enum ExitCode
{
    kDone = 0,
    kNotFound = 1,
    kWrongUsage = 2,
    kCannotRead = 3,
    kMalformed = 4,
    kLocked = 5,
    kCannotWrite = 6
};

class Failure : public std::runtime_error
{
public:
    // `code` is an ExitCode, or 128 plus the number of a signal.
    Failure(int code, const std::string& message) : std::runtime_error(message), _code(code) {}
    int Code() const { return _code; }

private:
    int _code;
};

} // namespace qxut
