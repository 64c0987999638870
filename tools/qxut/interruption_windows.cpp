#include "interruption.h"

#include <windows.h>

#include <atomic>
#include <utility>

namespace qxut
{

struct Interruption::State
{
    std::function<void()> cleanUp;
    std::atomic<int> exitCode = 0;
};

namespace
{

// The system calls the handler without a context. At most one object exists at a time.
std::atomic<Interruption*> current = nullptr;
std::function<void(int)> handle;

BOOL WINAPI OnControl(DWORD type)
{
    constexpr int kInterrupt = 128 + 2;
    constexpr int kHangUp = 128 + 1;
    constexpr int kTerminate = 128 + 15;
    if (current == nullptr)
        return FALSE;
    handle(type == CTRL_C_EVENT ? kInterrupt : type == CTRL_CLOSE_EVENT ? kHangUp : kTerminate);
    return TRUE;
}

} // namespace

Interruption::Interruption(std::function<void()> cleanUp) : _state(std::make_unique<State>())
{
    _state->cleanUp = std::move(cleanUp);
    handle = [state = _state.get()](int code)
    {
        // The system handles each signal on a thread of its own.
        const bool isSecond = state->exitCode.exchange(code) != 0;
        if (state->cleanUp && isSecond)
            return;
        if (state->cleanUp)
            state->cleanUp();
        if (state->cleanUp || isSecond)
            ExitProcess(static_cast<UINT>(code));
    };
    current = this;
    SetConsoleCtrlHandler(OnControl, TRUE);
}

Interruption::~Interruption()
{
    SetConsoleCtrlHandler(OnControl, FALSE);
    current = nullptr;
}

int Interruption::ExitCode() const
{
    return _state->exitCode;
}

} // namespace qxut
