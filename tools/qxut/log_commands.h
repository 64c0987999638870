// The command qxut log: shows the log file of the debug output, and switches it on and off.
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddLogCommands(CLI::App& program);

} // namespace qxut
