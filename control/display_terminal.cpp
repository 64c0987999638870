#include "display.h"

#include "terminal.h"

#include <algorithm>
#include <iterator>
#include <string>

#include <unistd.h>

namespace qxcontrol
{
namespace
{

constexpr std::size_t kMaxColumns = 160;
constexpr std::size_t kMaxTextLines = 3;
constexpr std::size_t kMaxBar = 40;

// All dialogs share the terminal, which shows the newest.
struct Shown
{
    std::uint64_t number = 0; // 0 if the dialog isn't open
    std::uint32_t interruptsBefore = 0;
};

constinit Shown dialogsShown[kMaxDialogs];
std::uint64_t newestNumber = 0;
unsigned linesDrawn = 0; // the cursor is at the start of the line below them
bool isTorn = false;     // part of the last output is missing, so the place of the cursor is unknown
constinit Output output;

// std::char_traits would call the C library, whose characters have 32 bits.
std::size_t LengthOf(const wchar_t* text)
{
    std::size_t length = 0;
    while (text[length] != 0)
        ++length;
    return length;
}

// Moves the cursor to the first line that was drawn and erases everything from there on.
void AddErasure()
{
    output.Clear();
    if (isTorn)
        output.Add("\x1b[0m\r\n");
    else if (linesDrawn > 0)
    {
        output.Add("\r\x1b[");
        output.AddNumber(linesDrawn);
        output.Add("A");
    }
    output.Add("\x1b[J");
}

void Draw(unsigned lines)
{
    const Output::Written written = output.Write();
    if (written == Output::Written::Nothing)
        return;
    isTorn = written == Output::Written::Part;
    linesDrawn = isTorn ? 0 : lines;
}

// Keeps lines narrower than the terminal, because some terminals wrap the cursor after a full line.
void AddLine(const char* indentation, const wchar_t* text, std::size_t length, std::size_t columns)
{
    output.Add(indentation);
    const std::size_t room = columns - 1 - std::char_traits<char>::length(indentation);
    output.AddText(text, length, room);
    output.Add("\r\n");
}

unsigned AddText(const wchar_t* text, std::size_t columns, std::size_t maxLines)
{
    unsigned lines = 0;
    const wchar_t* const end = text + LengthOf(text);
    while (text != end && lines < maxLines)
    {
        const wchar_t* const lineEnd = std::find(text, end, L'\n');
        AddLine("  ", text, static_cast<std::size_t>(lineEnd - text), columns);
        ++lines;
        text = lineEnd == end ? end : lineEnd + 1;
    }
    return lines;
}

void AddBar(int percent, bool isAborted, std::size_t columns)
{
    constexpr std::size_t kRest = 30; // the columns that aren't the bar
    const std::size_t width = columns > kRest ? std::min(columns - kRest, kMaxBar) : 0;
    const std::size_t filled = width * static_cast<std::size_t>(percent) / 100;
    output.Add("  ");
    if (width > 0)
    {
        output.Add("[");
        for (std::size_t at = 0; at < width; ++at)
            output.Add(at < filled ? "#" : "-");
        output.Add("] ");
    }
    output.AddNumber(static_cast<unsigned>(percent));
    output.Add(" %");
    if (width > 0)
        output.Add(isAborted ? "  stopping" : "  Ctrl+C stops it");
    output.Add("\r\n");
}

} // namespace

bool OpenDisplay(std::size_t dialog, const Content& content)
{
    if (!IsOnTerminal())
        return false;
    BeginInterruptWatch();
    dialogsShown[dialog] = {++newestNumber, InterruptCount()};
    UpdateDisplay(dialog, content);
    return true;
}

void UpdateDisplay(std::size_t dialog, const Content& content)
{
    const auto isOlder = [](const Shown& one, const Shown& other)
    {
        return one.number < other.number;
    };
    const Shown* const newest = std::max_element(std::begin(dialogsShown), std::end(dialogsShown), isOlder);
    if (newest != &dialogsShown[dialog] || !IsOnTerminal())
        return;
    const TerminalSize size = SizeOfTerminal();
    const std::size_t columns = std::clamp<std::size_t>(size.columns, 10, kMaxColumns);
    unsigned lines = 1; // the bar
    AddErasure();
    if (content.title[0] != 0 && size.rows > 4)
    {
        AddLine("", content.title, LengthOf(content.title), columns);
        ++lines;
    }
    lines += AddText(content.text, columns, std::min(kMaxTextLines, size.rows > 4 ? size.rows - 4 : 0));
    AddBar(content.percent, IsAborted(dialog), columns);
    Draw(lines);
}

void CloseDisplay(std::size_t dialog)
{
    dialogsShown[dialog] = {};
    if (linesDrawn > 0 && IsOnTerminal())
    {
        AddErasure();
        Draw(0);
    }
    linesDrawn = 0;
    EndInterruptWatch();
}

bool IsAborted(std::size_t dialog)
{
    return InterruptCount() != dialogsShown[dialog].interruptsBefore;
}

void* WindowOf(std::size_t)
{
    return nullptr;
}

void WriteLine(const wchar_t* text, std::size_t length)
{
    output.Clear();
    output.AddText(text, length, length * 2);
    output.Add("\n");
    output.Write();
}

std::uint32_t ProcessNumber()
{
    return static_cast<std::uint32_t>(getpid());
}

void ForgetDisplays()
{
    std::fill(std::begin(dialogsShown), std::end(dialogsShown), Shown());
    linesDrawn = 0;
    isTorn = false;
    ForgetInterruptWatches();
}

} // namespace qxcontrol
