// The command qxut log: shows and switches the log file of the debug output.
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddLogCommands(CLI::App& program);

} // namespace qxut
