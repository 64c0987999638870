// The commands qxut date ...: parse and format dates and times.
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddDateCommands(CLI::App& program);

} // namespace qxut
