// The commands qxut profile convert, embed and extract.
#pragma once

#include <CLI/CLI.hpp>

namespace qxut
{

void AddConvertCommands(CLI::App& profile);

} // namespace qxut
