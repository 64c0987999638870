// The folder that contains the layer's state.
#pragma once

#include <string>

namespace qxplatform
{

// Returns QXPLATFORM_HOME if set, otherwise `qxplatform` in XDG_CONFIG_HOME or in ~/.config. The folder need not exist.
// Returns an empty text if the user has no home folder either; functions that need state then fail in their own way.
std::string HomeFolder();

} // namespace qxplatform
