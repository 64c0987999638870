// qxut pack, unpack, html2text, text2html, mask, unmask: what one file or the standard input gives, to another or the
// standard output.
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddFilterCommands(CLI::App& program);

} // namespace qxut
