// Prints a profile as text for people and as JSON for programs.
#pragma once

#include <qxut23/profile.h>

#include <ostream>

namespace qxut
{

// Prints list names in brackets and the entries of lists indented below them.
void ShowAsText(std::ostream& out, HPROFJOB job, HPROFLIST list);

// Prints an array of {"name", "value"} and {"name", "list"} objects in the order of the list; names may repeat.
void ShowAsJson(std::ostream& out, HPROFJOB job, HPROFLIST list);

} // namespace qxut
