// Message boxes without a screen: the text is written to standard error, the answer comes from the environment.
#include <winuser.h>

#include "base/environment.h"
#include "base/fail.h"
#include "base/text.h"

#include <algorithm>
#include <string>

#include <strings.h>
#include <unistd.h>

using namespace qxplatform;

namespace
{

struct Button
{
    int id;
    const char* name;
};

constexpr Button kOk = {IDOK, "ok"};
constexpr Button kCancel = {IDCANCEL, "cancel"};
constexpr Button kAbortButton = {IDABORT, "abort"};
constexpr Button kRetry = {IDRETRY, "retry"};
constexpr Button kIgnore = {IDIGNORE, "ignore"};
constexpr Button kYes = {IDYES, "yes"};
constexpr Button kNo = {IDNO, "no"};
constexpr Button kTryAgain = {IDTRYAGAIN, "tryagain"};
constexpr Button kGoOn = {IDCONTINUE, "continue"};

constexpr std::size_t kMostButtons = 3;

// Indexed by the low bits of the style.
constexpr Button kButtonsByType[][kMostButtons] = {
    {kOk},
    {kOk, kCancel},
    {kAbortButton, kRetry, kIgnore},
    {kYes, kNo, kCancel},
    {kYes, kNo},
    {kRetry, kCancel},
    {kCancel, kTryAgain, kGoOn},
};

std::size_t CountOf(const Button (&buttons)[kMostButtons])
{
    return static_cast<std::size_t>(
        std::count_if(buttons, buttons + kMostButtons, [](const Button& button) { return button.name != nullptr; }));
}

// Returns the index of the style's default button. If the button doesn't exist, returns the first one.
std::size_t DefaultOf(const Button (&buttons)[kMostButtons], UINT style)
{
    const std::size_t index = (style & MB_DEFMASK) >> 8;
    return index < CountOf(buttons) ? index : 0;
}

// Returns the button named by QXPLATFORM_MESSAGEBOX if the box has it, otherwise the default button.
const Button& Answer(const Button (&buttons)[kMostButtons], UINT style)
{
    const std::string wanted = EnvironmentValue("QXPLATFORM_MESSAGEBOX");
    const Button* const end = buttons + CountOf(buttons);
    const Button* const found = std::find_if(
        buttons, end, [&wanted](const Button& button) { return strcasecmp(button.name, wanted.c_str()) == 0; });
    return found == end ? buttons[DefaultOf(buttons, style)] : *found;
}

std::string Bytes(LPCWSTR text)
{
    return text == nullptr ? std::string() : ToBytes(View(text));
}

// Writes the text in one call, so that boxes of several threads are not interleaved.
void Print(const std::string& text)
{
    for (std::size_t done = 0; done < text.size();)
    {
        const ssize_t written = write(STDERR_FILENO, text.data() + done, text.size() - done);
        if (written <= 0)
            return;
        done += static_cast<std::size_t>(written);
    }
}

} // namespace

int WINAPI MessageBoxW(HWND hWnd, LPCWSTR lpText, LPCWSTR lpCaption, UINT uType)
{
    const UINT type = uType & MB_TYPEMASK;
    if (hWnd != nullptr)
        return Fail(ERROR_INVALID_WINDOW_HANDLE);
    if (type >= std::size(kButtonsByType))
        return Fail(ERROR_INVALID_MSGBOX_STYLE);
    const Button& answer = Answer(kButtonsByType[type], uType);
    Print(Bytes(lpCaption == nullptr ? L"Error" : lpCaption) + ": " + Bytes(lpText) + " [" + answer.name + "]\n");
    return answer.id;
}

BOOL WINAPI MessageBeep(UINT)
{
    return TRUE;
}
