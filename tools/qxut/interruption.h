// Handles Ctrl-C and similar signals: the program removes unfinished files before it ends.
#pragma once

#include <functional>
#include <memory>

namespace qxut
{

// While the object exists, SIGINT, SIGTERM and SIGHUP (on windows Ctrl-C, Ctrl-Break and closing the window) don't end
// the program immediately. A signal that was ignored when the program started stays ignored.
class Interruption
{
public:
    // With `cleanUp`, the function is called on another thread, and then the program exits. Further signals are ignored
    // meanwhile, so that they can't leave anything behind; the function must therefore not take long. Without it, the
    // first signal is only recorded (see ExitCode), and a second one exits.
    explicit Interruption(std::function<void()> cleanUp = {});
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    // Returns 128 plus the number of the signal, or 0 if there was none.
    int ExitCode() const;

private:
    struct State;
    std::unique_ptr<State> _state;
};

} // namespace qxut
