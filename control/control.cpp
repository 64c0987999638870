#include "control.h"

#include "display.h"
#include "timed_lock.h"

#include <algorithm>
#include <atomic>
#include <iterator>

using namespace qxcontrol;

namespace
{

struct Dialog
{
    std::int64_t handle = 0; // 0 if the dialog isn't open
    bool isShown = false;    // otherwise its texts are written as lines
    Content content{};
};

constinit TimedLock lock; // guards the following data
constinit Dialog dialogs[kMaxDialogs];
std::int64_t lastNumber = 0;
int jobs = 0;

std::atomic<std::uint32_t> owner = 0; // the process to which the dialogs belong

// Holds the lock during a call of an exported function. It converts to false if another thread holds the lock for too
// long; the function then does nothing.
class Call
{
public:
    Call() : _guard(ReadyLock()) {}
    explicit operator bool() const { return static_cast<bool>(_guard); }

private:
    static TimedLock& ReadyLock()
    {
        const std::uint32_t process = ProcessNumber();
        const std::uint32_t before = owner.exchange(process);
        if (before != 0 && before != process)
        {
            for (Dialog& dialog : dialogs)
                dialog.handle = 0;
            jobs = 0;
            ForgetDisplays();
            lock.Release(); // a thread of the parent process may have held it
        }
        return lock;
    }

    TimedGuard _guard;
};

Dialog* Find(std::int64_t handle)
{
    Dialog* const found = std::find_if(
        std::begin(dialogs), std::end(dialogs), [handle](const Dialog& each) { return each.handle == handle; });
    return handle == 0 || found == std::end(dialogs) ? nullptr : found;
}

std::size_t NumberOf(const Dialog& dialog)
{
    return static_cast<std::size_t>(&dialog - dialogs);
}

// Copies a text, truncated to the buffer. Returns false if the buffer already contained it.
template <std::size_t Size>
bool Store(wchar_t (&buffer)[Size], const wchar_t* text)
{
    std::size_t length = 0;
    bool isNew = false;
    for (; text && length < Size - 1 && text[length] != 0; ++length)
    {
        isNew = isNew || buffer[length] != text[length];
        buffer[length] = text[length];
    }
    isNew = isNew || buffer[length] != 0;
    buffer[length] = 0;
    return isNew;
}

// Writes a text as one line.
template <std::size_t Size>
void WriteText(const wchar_t (&text)[Size])
{
    wchar_t line[Size];
    std::size_t length = 0;
    for (; text[length] != 0; ++length)
        line[length] = text[length] < L' ' ? L' ' : text[length];
    if (length > 0)
        WriteLine(line, length);
}

void End(Dialog& dialog)
{
    dialog.handle = 0;
    if (!dialog.isShown)
        return;
    CloseDisplay(NumberOf(dialog));
    // On a terminal, the previous dialog appears again.
    for (const Dialog& other : dialogs)
        if (other.handle != 0 && other.isShown)
            UpdateDisplay(NumberOf(other), other.content);
}

void OpenJob()
{
    if (const Call call; call)
        ++jobs;
}

void CloseJob()
{
    const Call call;
    if (!call || jobs == 0 || --jobs > 0)
        return;
    for (Dialog& dialog : dialogs)
        if (dialog.handle != 0)
            End(dialog);
}

} // namespace

std::int64_t CtlJobOpenEx()
{
    OpenJob();
    return 1;
}

void CtlJobCloseEx(std::int64_t job)
{
    if (job != 0)
        CloseJob();
}

void CtlJobOpen()
{
    OpenJob();
}

void CtlJobClose()
{
    CloseJob();
}

std::int64_t CtlAbortDlgStart(void*, const QXWCHAR* title, const QXWCHAR* text, std::int32_t)
{
    const Call call;
    if (!call)
        return 0;
    Dialog* const dialog =
        std::find_if(std::begin(dialogs), std::end(dialogs), [](const Dialog& each) { return each.handle == 0; });
    if (dialog == std::end(dialogs))
        return 0;
    Store(dialog->content.title, title);
    Store(dialog->content.text, text);
    dialog->content.percent = 0;
    dialog->handle = ++lastNumber;
    dialog->isShown = OpenDisplay(NumberOf(*dialog), dialog->content);
    if (!dialog->isShown)
    {
        WriteText(dialog->content.title);
        WriteText(dialog->content.text);
    }
    return dialog->handle;
}

void CtlAbortDlgEnd(std::int64_t handle)
{
    const Call call;
    if (Dialog* const dialog = call ? Find(handle) : nullptr)
        End(*dialog);
}

void CtlAbortDlgSetText(std::int64_t handle, const QXWCHAR* text, std::int32_t percent)
{
    const Call call;
    Dialog* const dialog = call ? Find(handle) : nullptr;
    if (!dialog)
        return;
    Content& content = dialog->content;
    const bool isNewText = text && Store(content.text, text);
    const int before = content.percent;
    if (percent >= 0)
        content.percent = std::min(percent, 100);
    if (!dialog->isShown && isNewText)
        WriteText(content.text);
    if (dialog->isShown && (isNewText || content.percent != before))
        UpdateDisplay(NumberOf(*dialog), content);
}

std::int32_t CtlAbortDlgCheckAbort(std::int64_t handle)
{
    const Call call;
    const Dialog* const dialog = call ? Find(handle) : nullptr;
    return dialog && dialog->isShown && IsAborted(NumberOf(*dialog)) ? -1 : 0;
}

void* CtlAbortDlgHWnd(std::int64_t handle)
{
    const Call call;
    const Dialog* const dialog = call ? Find(handle) : nullptr;
    return dialog && dialog->isShown ? WindowOf(NumberOf(*dialog)) : nullptr;
}
