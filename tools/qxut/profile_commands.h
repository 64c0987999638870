// The commands qxut profile ...
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddProfileCommands(CLI::App& program);

} // namespace qxut
