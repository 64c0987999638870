// The commands that take profiles and files from one form to another: convert, embed, extract.
#pragma once

#include <CLI/CLI.hpp>

namespace qxut
{

void AddConvertCommands(CLI::App& profile);

} // namespace qxut
