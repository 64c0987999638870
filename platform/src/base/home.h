// The folder that holds the layer's state.
#pragma once

#include <string>

namespace qxplatform
{

// QXPLATFORM_HOME if set, else `qxplatform` below XDG_CONFIG_HOME or below ~/.config. The folder need not exist. Empty
// if even the user has no home folder: then there is no state, and whatever needs some fails in its own way.
std::string HomeFolder();

} // namespace qxplatform
