#include "terminal.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qxcontrol
{
namespace
{

// The time to wait for a slow reader before output is dropped.
constexpr int kPatienceMs = 100;

// Makes writing safe for the thread: a closed pipe doesn't end it, a terminal that refuses output from the background
// doesn't stop it, and it can't be cancelled. Preserves errno.
class QuietThread
{
public:
    QuietThread()
    {
        sigemptyset(&_signals);
        sigaddset(&_signals, SIGPIPE);
        sigaddset(&_signals, SIGTTOU);
        sigset_t pending;
        sigpending(&pending);
        _wasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &_signals, &_before);
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &_cancelState);
    }
    ~QuietThread()
    {
        if (!_wasPending)
        {
            sigset_t pipe;
            sigemptyset(&pipe);
            sigaddset(&pipe, SIGPIPE);
            const timespec noTime{};
            sigtimedwait(&pipe, nullptr, &noTime);
        }
        pthread_setcancelstate(_cancelState, nullptr);
        pthread_sigmask(SIG_SETMASK, &_before, nullptr);
        errno = _error;
    }
    QuietThread(const QuietThread&) = delete;
    QuietThread& operator=(const QuietThread&) = delete;

private:
    const int _error = errno;
    sigset_t _signals, _before;
    bool _wasPending = false;
    int _cancelState = PTHREAD_CANCEL_ENABLE;
};

// Writes as many bytes as the file accepts without blocking. `file` is a second, non-blocking descriptor of standard
// error, or standard error itself if it is a regular file or a socket.
ssize_t WriteSome(int file, bool isSocket, const char* bytes, std::size_t size)
{
    pollfd ready = {file, POLLOUT, 0};
    int count = -1;
    for (int tries = 0; tries < 10 && count < 0; ++tries) // signals interrupt it
        count = poll(&ready, 1, kPatienceMs);
    if (count != 1 || (ready.revents & POLLOUT) == 0)
        return -1;
    return isSocket ? send(file, bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL) : write(file, bytes, size);
}

std::atomic<unsigned> watches = 0;
std::atomic<std::uint32_t> interrupts = 0;
std::atomic<pid_t> watcher = 0;
bool isInstalled = false;
struct sigaction former;

// The default action of SIGINT is to end the process, which happens when the handler returns.
void PassOn(int signal, siginfo_t* info, void* context)
{
    if ((former.sa_flags & SA_SIGINFO) != 0)
        former.sa_sigaction(signal, info, context);
    else if (former.sa_handler == SIG_DFL)
    {
        std::signal(signal, SIG_DFL);
        raise(signal);
    }
    else if (former.sa_handler != SIG_IGN)
        former.sa_handler(signal);
}

void OnInterrupt(int signal, siginfo_t* info, void* context)
{
    const int error = errno;
    if (watches != 0 && watcher == getpid())
        ++interrupts;
    else
        PassOn(signal, info, context);
    errno = error;
}

bool IsOurs(const struct sigaction& action)
{
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == OnInterrupt;
}

// Counts a SIGINT that is pending because the handler of a crash blocks the signal.
void TakePendingInterrupt()
{
    sigset_t blocked, pending, interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    const timespec noTime{};
    if (pthread_sigmask(SIG_BLOCK, nullptr, &blocked) == 0 && sigismember(&blocked, SIGINT) == 1 &&
        sigpending(&pending) == 0 && sigismember(&pending, SIGINT) == 1 &&
        sigtimedwait(&interrupt, nullptr, &noTime) == SIGINT)
        ++interrupts;
}

bool IsControl(std::uint32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

// Overestimates rather than underestimates: a line must not be wrapped.
std::size_t ColumnsOf(std::uint32_t character)
{
    return character >= 0x1100 ? 2 : 1;
}

std::size_t Encode(std::uint32_t character, char (&bytes)[4])
{
    const auto byte = [](std::uint32_t bits)
    {
        return static_cast<char>(bits);
    };
    const auto tail = [=](int shift)
    {
        return byte(0x80 | ((character >> shift) & 0x3F));
    };
    std::size_t size = 0;
    if (character < 0x80)
        bytes[size++] = byte(character);
    else if (character < 0x800)
        bytes[size++] = byte(0xC0 | (character >> 6));
    else if (character < 0x10000)
    {
        bytes[size++] = byte(0xE0 | (character >> 12));
        bytes[size++] = tail(6);
    }
    else
    {
        bytes[size++] = byte(0xF0 | (character >> 18));
        bytes[size++] = tail(12);
        bytes[size++] = tail(6);
    }
    if (character >= 0x80)
        bytes[size++] = tail(0);
    return size;
}

// Returns the character at a position and moves the position behind it.
std::uint32_t NextCharacter(const wchar_t* text, std::size_t length, std::size_t& at)
{
    const std::uint32_t unit = text[at++];
    if (unit < 0xD800 || unit > 0xDFFF)
        return unit;
    if (unit > 0xDBFF || at == length || text[at] < 0xDC00 || text[at] > 0xDFFF)
        return 0xFFFD;
    return 0x10000 + ((unit - 0xD800) << 10) + (text[at++] - 0xDC00u);
}

} // namespace

void Output::Add(const char* bytes, std::size_t size)
{
    if (size > sizeof _bytes - _size)
        return;
    std::memcpy(_bytes + _size, bytes, size);
    _size += size;
}

void Output::Add(const char* text)
{
    Add(text, std::strlen(text));
}

void Output::AddNumber(unsigned number)
{
    char digits[10];
    std::size_t first = sizeof digits;
    do
        digits[--first] = static_cast<char>('0' + number % 10);
    while ((number /= 10) != 0);
    Add(digits + first, sizeof digits - first);
}

std::size_t Output::AddText(const wchar_t* text, std::size_t length, std::size_t columns)
{
    std::size_t used = 0;
    for (std::size_t at = 0; at < length;)
    {
        std::uint32_t character = NextCharacter(text, length, at);
        if (IsControl(character))
            character = '?';
        if (used + ColumnsOf(character) > columns)
            break;
        used += ColumnsOf(character);
        char bytes[4];
        Add(bytes, Encode(character, bytes));
    }
    return used;
}

Output::Written Output::Write() const
{
    const QuietThread quiet;
    struct stat info;
    if (fstat(STDERR_FILENO, &info) != 0)
        return Written::Nothing;
    // Opened anew for each text: the program could close a descriptor that stays open, and reuse its number.
    const bool mayBlock = !S_ISREG(info.st_mode) && !S_ISSOCK(info.st_mode);
    const int own = mayBlock ? open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC) : -1;
    std::size_t done = 0;
    while (done < _size)
    {
        const ssize_t written =
            WriteSome(own >= 0 ? own : STDERR_FILENO, S_ISSOCK(info.st_mode), _bytes + done, _size - done);
        if (written <= 0)
            break;
        done += static_cast<std::size_t>(written);
    }
    if (own >= 0)
        close(own);
    return done == 0 ? Written::Nothing : done < _size ? Written::Part : Written::All;
}

bool IsOnTerminal()
{
    const int error = errno;
    const char* const kind = std::getenv("TERM");
    const bool isUsable = kind && *kind != 0 && std::strcmp(kind, "dumb") != 0 && isatty(STDERR_FILENO) == 1 &&
                          tcgetpgrp(STDERR_FILENO) == getpgrp();
    errno = error;
    return isUsable;
}

TerminalSize SizeOfTerminal()
{
    const int error = errno;
    winsize size{};
    ioctl(STDERR_FILENO, TIOCGWINSZ, &size);
    errno = error;
    return {size.ws_col > 0 ? size.ws_col : 80u, size.ws_row > 0 ? size.ws_row : 24u};
}

void BeginInterruptWatch()
{
    watcher = getpid();
    if (watches++ != 0 || isInstalled)
        return;
    struct sigaction action
    {
    };
    action.sa_sigaction = OnInterrupt;
    action.sa_flags = SA_SIGINFO | SA_RESTART | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    // The previous action is stored first, because the handler may run at once.
    isInstalled = sigaction(SIGINT, nullptr, &former) == 0 && sigaction(SIGINT, &action, nullptr) == 0;
}

void EndInterruptWatch()
{
    struct sigaction present;
    if (watches == 0 || --watches != 0 || !isInstalled)
        return;
    // A handler that was installed afterwards stays. It may call ours, which then passes the signal on.
    if (sigaction(SIGINT, nullptr, &present) == 0 && IsOurs(present))
        isInstalled = sigaction(SIGINT, &former, nullptr) != 0;
}

std::uint32_t InterruptCount()
{
    TakePendingInterrupt();
    return interrupts;
}

void ForgetInterruptWatches()
{
    watches = 0;
}

} // namespace qxcontrol
