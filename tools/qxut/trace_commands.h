// The command qxut trace: records markers, and converts the recording for timeline viewers.
#pragma once

namespace CLI
{
class App;
}

namespace qxut
{

void AddTraceCommands(CLI::App& program);

} // namespace qxut
