// Writes to standard error, and counts presses of Ctrl+C.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace qxcontrol
{

// A buffer of fixed size for output to standard error. Bytes that don't fit are dropped.
class Output
{
public:
    void Clear() { _size = 0; }
    void Add(const char* bytes, std::size_t size);
    void Add(const char* text);
    void AddNumber(unsigned number);

    // Appends UTF-16 text as UTF-8, up to a number of columns. Control characters become question marks, so that a file
    // name can't control the terminal. Returns the number of columns.
    std::size_t AddText(const wchar_t* text, std::size_t length, std::size_t columns);

    // Writes the bytes to standard error. Waits at most 100 ms for a slow reader.
    enum class Written
    {
        Nothing,
        Part,
        All
    };
    Written Write() const;

private:
    char _bytes[4096] = {}; // pipes accept this size in one piece
    std::size_t _size = 0;
};

// Returns true if standard error is a terminal that can move its cursor, and this process is in its foreground.
bool IsOnTerminal();

// The columns and rows of the terminal.
struct TerminalSize
{
    std::size_t columns;
    std::size_t rows;
};
TerminalSize SizeOfTerminal();

// While at least one watch exists, Ctrl+C is counted. Otherwise it has its previous effect.
void BeginInterruptWatch();
void EndInterruptWatch();
std::uint32_t InterruptCount();

// Ends all watches without restoring anything, for a child of fork.
void ForgetInterruptWatches();

} // namespace qxcontrol
