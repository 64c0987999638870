// A registry of the test program's own.
#pragma once

#include <string>

// Where the registry is a file: the folder that holds it, made for this program. Elsewhere empty; tests keep to a key
// of their own there.
const std::string& OwnRegistryFolder();

// Makes the layer forget what it knows of the files, so that the next call reads them.
void ReadRegistryAnew();
