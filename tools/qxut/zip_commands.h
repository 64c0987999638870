// qxut zip ...: the commands for archives.
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddZipCommands(CLI::App& program);

} // namespace qxut
