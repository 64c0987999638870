// The commands qxut pack, unpack, html2text, text2html, mask and unmask: convert a file or the standard input, and
// write a file or the standard output.
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddFilterCommands(CLI::App& program);

} // namespace qxut
