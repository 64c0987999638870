// The commands qxut country and qxut language: look up countries and languages by any of their names.
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddCountryCommands(CLI::App& program);

} // namespace qxut
