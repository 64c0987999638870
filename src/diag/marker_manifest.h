// The manifest of the marker provider, which describes its events to timeline tools.
#pragma once

#include <windows.h>

#include <cstddef>

namespace qx
{

inline constexpr std::size_t kMarkerManifestSize = 3'699; // with the terminator

// Writes the manifest of a provider into a buffer of kMarkerManifestSize bytes. Returns its length without the
// terminator, or 0 on failure.
std::size_t PrintMarkerManifest(char* buffer, const GUID& providerId);

} // namespace qx
