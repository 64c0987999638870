// Exit codes, the exception that ends the program with a message, and the library's own messages.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

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

// main() escapes the control characters of messages, which may contain names from anywhere.
class Failure : public std::runtime_error
{
public:
    // `code` is an ExitCode, or 128 plus the number of a signal.
    Failure(int code, const std::string& message) : Failure(code, std::vector<std::string>{message}) {}
    // For several messages; there must be at least one.
    Failure(int code, std::vector<std::string> messages)
        : std::runtime_error(messages.front()),
          _code(code),
          _messages(std::move(messages))
    {
    }
    int Code() const { return _code; }
    const std::vector<std::string>& Messages() const { return _messages; }

private:
    int _code;
    std::vector<std::string> _messages;
};

// Returns the library's description of its last failure, or the given text if there is none.
std::string LibraryErrorText(const std::string& otherwise);

} // namespace qxut
