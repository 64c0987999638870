// The command that prints what documents say about themselves.
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddDocCommands(CLI::App& program);

} // namespace qxut
