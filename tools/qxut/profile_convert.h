// The commands qxut profile convert, embed and extract.
#pragma once

#include "profile_file.h"

#include <CLI/CLI.hpp>

namespace qxut
{

void AddConvertCommands(CLI::App& profile);

// Adds the option --max-size, which all profile commands have.
void AddMaxSize(CLI::App& command, MaxSize& maxSize);

} // namespace qxut
