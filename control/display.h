// Shows dialogs: on a terminal on linux, as windows on windows. Dialogs are numbered from 0. Callers hold the library's
// lock, so calls never overlap.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qxcontrol
{

constexpr std::size_t kMaxDialogs = 8;

// The contents of a dialog. The texts end with a zero.
struct Content
{
    wchar_t title[251];
    wchar_t text[501];
    int percent; // from 0 to 100
};

// Shows a dialog. Returns false if there is neither a screen nor a terminal.
bool OpenDisplay(std::size_t dialog, const Content& content);
void UpdateDisplay(std::size_t dialog, const Content& content);
void CloseDisplay(std::size_t dialog);
bool IsAborted(std::size_t dialog);
void* WindowOf(std::size_t dialog);

// Writes a text and a line end to standard error. Text that can't be written is lost.
void WriteLine(const wchar_t* text, std::size_t length);

// A process that was created by fork has a copy of the dialogs, but they belong to its parent.
std::uint32_t ProcessNumber();
void ForgetDisplays();

} // namespace qxcontrol
