#include "terminal.h"

#include "interruption.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace qxut
{

std::vector<std::string> StartTerminal(int argc, char** argv)
{
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

void MakeStandardStreamsBinary() {}

bool OutputGoesToTerminal()
{
    return isatty(STDOUT_FILENO) != 0;
}

bool TerminalHasColours()
{
    const char* const terminal = std::getenv("TERM");
    return OutputGoesToTerminal() && terminal != nullptr && std::string_view(terminal) != "dumb" &&
           std::getenv("NO_COLOR") == nullptr;
}

bool ErrorsGoToTerminal()
{
    return isatty(STDERR_FILENO) != 0;
}

int ReadByte(int descriptor, char& byte)
{
    for (;;)
        if (const ssize_t count = read(descriptor, &byte, 1); count >= 0 || errno != EINTR)
            return static_cast<int>(count);
}

Answer AskSecretly(const char* question, SecretLine& line)
{
    const int terminal = open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios before{};
    if (terminal < 0 || tcgetattr(terminal, &before) != 0)
    {
        if (terminal >= 0)
            close(terminal);
        return Answer::NoTerminal;
    }
    // The handler of SIGINT and similar signals restores the terminal before the program ends.
    const auto restore = [&]
    {
        tcsetattr(terminal, TCSAFLUSH, &before);
    };
    Answer answer = Answer::Given;
    {
        const Interruption interruption(restore);
        termios silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silent.c_lflag |= ECHONL;
        tcsetattr(terminal, TCSAFLUSH, &silent);
        if (write(terminal, question, std::strlen(question)) < 0)
            answer = Answer::NoTerminal;
        char c = 0;
        while (answer != Answer::NoTerminal && ReadByte(terminal, c) == 1 && c != '\n')
            if (!line.Append(c))
                answer = Answer::TooLong;
        restore();
    }
    close(terminal);
    return answer;
}

} // namespace qxut
