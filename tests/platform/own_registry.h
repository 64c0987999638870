// A private registry for the test program.
#pragma once

#include <string>

// Returns the folder with the registry's files, created by the first call, which must precede any use of the registry.
// Returns an empty text if the registry isn't a
// file; tests then use a key of their own.
const std::string& OwnRegistryFolder();

// Makes the layer discard its cached contents, so that the next call reads the files.
void ReadRegistryAnew();
