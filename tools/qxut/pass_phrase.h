// The options --key, --key-file, --key-fd and --ask-key.
#pragma once

#include "text.h"

#include <optional>
#include <string>

namespace CLI
{
class App;
}

namespace qxut
{

struct KeyOptions
{
    std::optional<std::string> key;
    std::optional<std::string> file;
    std::optional<int> descriptor;
    bool ask = false;

    bool IsGiven() const { return key || file || descriptor || ask; }
};

// `use` says what the pass phrase is for, and what happens without one.
void AddKeyOptions(CLI::App& command, KeyOptions& options, const std::string& use);

// The pass phrase, or an empty text if no option asks for one. It is erased with the object, but the text of --key
// remains in the command line.
class PassPhrase
{
public:
    enum class Purpose
    {
        Decrypt,
        Encrypt // a phrase that is typed in must be typed twice
    };

    // Throws a Failure if the phrase can't be read, is empty, or isn't one line of UTF-8 that the library's code page
    // represents exactly.
    PassPhrase(const KeyOptions& options, Purpose purpose);
    PassPhrase(const PassPhrase&) = delete;
    PassPhrase& operator=(const PassPhrase&) = delete;
    ~PassPhrase() { _text.Erase(); }

    operator const QXWCHAR*() const { return _text; }

private:
    WideText _text;
};

} // namespace qxut
