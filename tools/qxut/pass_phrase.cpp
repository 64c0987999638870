#include "pass_phrase.h"

#include "failure.h"
#include "secret.h"
#include "terminal.h"

#include <qxut23/packed_text.h>

#include <CLI/CLI.hpp>

#include <filesystem>
#include <fstream>
#include <string_view>

namespace qxut
{

namespace
{

namespace fs = std::filesystem;

constexpr char kTooLong[] = "the pass phrase is longer than 1024 bytes";

void Append(SecretLine& line, char c)
{
    if (!line.Append(c))
        throw Failure(kWrongUsage, kTooLong);
}

// Reads a file without a buffer that would keep a copy.
void ReadFile(const std::string& path, SecretLine& line)
{
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(fs::u8path(path), std::ios::binary);
    std::error_code ignored;
    if (!file || fs::is_directory(fs::u8path(path), ignored))
        throw Failure(kCannotRead, path + ": cannot open the file with the pass phrase");
    bool isOver = false;
    for (char c = 0; file.get(c);)
    {
        if (isOver)
            throw Failure(kWrongUsage, path + ": has more than one line; the pass phrase must be the only one");
        isOver = c == '\n';
        if (!isOver)
            Append(line, c);
    }
}

// Reads a line byte by byte, because what follows may be meant for somebody else.
void ReadFromDescriptor(int descriptor, SecretLine& line)
{
    for (char c = 0;;)
    {
        const int count = ReadByte(descriptor, c);
        if (count < 0)
            throw Failure(kCannotRead, "cannot read the pass phrase from descriptor " + std::to_string(descriptor));
        if (count == 0 || c == '\n')
            return;
        Append(line, c);
    }
}

void Ask(const char* question, SecretLine& line)
{
    switch (AskSecretly(question, line))
    {
    case Answer::Given:
        return;
    case Answer::TooLong:
        throw Failure(kWrongUsage, kTooLong);
    case Answer::NoTerminal:
        throw Failure(kCannotRead, "cannot ask for the pass phrase: there is no terminal");
    }
}

void Read(const KeyOptions& options, PassPhrase::Purpose purpose, SecretLine& line)
{
    if (options.key)
        for (const char c : *options.key)
            Append(line, c);
    else if (options.file)
        ReadFile(*options.file, line);
    else if (options.descriptor)
        ReadFromDescriptor(*options.descriptor, line);
    else
    {
        Ask("Pass phrase: ", line);
        SecretLine again;
        if (purpose == PassPhrase::Purpose::Encrypt)
            Ask("The same again: ", again);
        if (purpose == PassPhrase::Purpose::Encrypt && again.View() != line.View())
            throw Failure(kWrongUsage, "the two pass phrases differ");
    }
}

WideText TextOf(const KeyOptions& options, PassPhrase::Purpose purpose)
{
    if (!options.IsGiven())
        return WideText("");
    SecretLine line;
    Read(options, purpose, line);
    std::string_view phrase = line.View();
    if (phrase.ends_with('\r'))
        phrase.remove_suffix(1);
    if (phrase.starts_with("\xEF\xBB\xBF"))
        phrase.remove_prefix(3);
    if (phrase.empty())
        throw Failure(kWrongUsage, "the pass phrase is empty");
    if (!IsUtf8(phrase) || phrase.find_first_of(std::string_view("\0\r\n", 3)) != phrase.npos)
        throw Failure(kWrongUsage, "the pass phrase is not one line of UTF-8");
    WideText text(phrase);
    if (QxIsPassPhraseExact(text) == 1)
        return text;
    text.Erase();
    throw Failure(kWrongUsage,
        "the pass phrase contains a character that the code page of this system can't represent, so "
        "other pass phrases would open the same files");
}

} // namespace

void AddKeyOptions(CLI::App& command, KeyOptions& options, const std::string& use)
{
    CLI::Option* const key = command.add_option("--key", options.key,
        use + ". Other users of the machine can see command lines: prefer one of the next three options");
    CLI::Option* const file =
        command.add_option("--key-file", options.file, "read the pass phrase from a file with one line");
    CLI::Option* const descriptor = command.add_option(
        "--key-fd", options.descriptor, "read the pass phrase, a line, from an open file descriptor");
    CLI::Option* const ask = command.add_flag("--ask-key", options.ask, "ask for the pass phrase on the terminal");
    key->excludes(file)->excludes(descriptor)->excludes(ask);
    file->excludes(descriptor)->excludes(ask);
    descriptor->excludes(ask)->check(CLI::NonNegativeNumber.description(""));
}

PassPhrase::PassPhrase(const KeyOptions& options, Purpose purpose) : _text(TextOf(options, purpose)) {}

} // namespace qxut
