// Standard error as a terminal or a stream of lines, and Ctrl+C.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace qxcontrol
{

// Bytes for the terminal, composed in memory that is always there. What exceeds the space is dropped.
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

    // Writes the bytes to standard error without waiting for a reader that doesn't read.
    enum class Written
    {
        Nothing,
        Part,
        All
    };
    Written Write() const;

private:
    char _bytes[4096] = {}; // what a pipe takes in one piece
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

// Ctrl+C is counted while there is a watch, and has its former effect otherwise.
void BeginInterruptWatch();
void EndInterruptWatch();
std::uint32_t InterruptCount();

// Ends all watches without restoring anything, for a child of fork.
void ForgetInterruptWatches();

} // namespace qxcontrol
