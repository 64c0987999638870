// Ctrl-C and its like: the program removes what is unfinished before it ends.
#pragma once

#include <functional>
#include <memory>

namespace qxut
{

// While the object exists, SIGINT, SIGTERM and SIGHUP (on windows Ctrl-C, Ctrl-Break and the close of the window) don't
// end the program at once. A signal that was ignored when the program started stays ignored.
class Interruption
{
public:
    // Without a function, an interruption is only noted: see ExitCode. With one, the function is called in another
    // thread, and the program exits with the code.
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
