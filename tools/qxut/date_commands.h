// qxut date ...: dates and times read and written.
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddDateCommands(CLI::App& program);

} // namespace qxut
