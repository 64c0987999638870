#include "interruption.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace qxut
{

namespace
{

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Excludes ignored signals: a program started by nohup, or in the background by a simple shell, must not be ended by
// them.
sigset_t SignalsToHandle()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : kSignals)
    {
        struct sigaction current
        {
        };
        sigaction(number, nullptr, &current);
        if (current.sa_handler != SIG_IGN)
            sigaddset(&set, number);
    }
    return set;
}

} // namespace

struct Interruption::State
{
    std::function<void()> cleanUp;
    sigset_t before{};
    int signals = -1;
    int end = eventfd(0, EFD_CLOEXEC);
    std::atomic<int> exitCode = 0;
    std::thread thread;

    void Wait()
    {
        for (;;)
        {
            pollfd events[] = {{signals, POLLIN, 0}, {end, POLLIN, 0}};
            if (poll(events, 2, -1) < 0)
                continue;
            if (events[1].revents != 0)
                return;
            signalfd_siginfo info{};
            if (read(signals, &info, sizeof info) != sizeof info)
                continue;
            const bool isSecond = exitCode.exchange(128 + static_cast<int>(info.ssi_signo)) != 0;
            if (!cleanUp && !isSecond)
                continue;
            if (cleanUp)
                cleanUp();
            std::exit(exitCode); // also deletes the library's unfinished and temporary files
        }
    }
};

Interruption::Interruption(std::function<void()> cleanUp) : _state(std::make_unique<State>())
{
    const sigset_t set = SignalsToHandle();
    _state->cleanUp = std::move(cleanUp);
    pthread_sigmask(SIG_BLOCK, &set, &_state->before);
    _state->signals = signalfd(-1, &set, SFD_CLOEXEC);
    _state->thread = std::thread([state = _state.get()] { state->Wait(); });
}

Interruption::~Interruption()
{
    eventfd_write(_state->end, 1);
    _state->thread.join();
    close(_state->signals);
    close(_state->end);
    // After an interruption the program is about to end with the exit code of the signal, which another signal mustn't
    // change.
    if (_state->exitCode == 0)
        pthread_sigmask(SIG_SETMASK, &_state->before, nullptr);
}

int Interruption::ExitCode() const
{
    return _state->exitCode;
}

} // namespace qxut
