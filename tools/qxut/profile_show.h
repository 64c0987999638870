// A profile as text for readers and as JSON for programs.
#pragma once

#include <qxut23/profile.h>

#include <ostream>

namespace qxut
{

// Lists in brackets, with their entries indented below them.
void ShowAsText(std::ostream& out, HPROFJOB job, HPROFLIST list);

// An array of {"name", "value"} and {"name", "list"} objects, in the order of the list; names may repeat.
void ShowAsJson(std::ostream& out, HPROFJOB job, HPROFLIST list);

} // namespace qxut
