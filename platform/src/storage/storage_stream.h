// Streams in compound files.
#pragma once

#include "storage/compound_file.h"

#include <objidl.h>

namespace qxplatform
{

// Returns a stream on an element of a compound file. Throws std::bad_alloc.
IStream* MakeStorageStream(const std::shared_ptr<CompoundFile>& file, const Element& element);

} // namespace qxplatform
