// The commands qxut zip ...
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddZipCommands(CLI::App& program);

} // namespace qxut
