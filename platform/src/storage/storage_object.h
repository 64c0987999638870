// Storages in compound files.
#pragma once

#include "storage/compound_file.h"

#include <objidl.h>

namespace qxplatform
{

// Returns a storage of a compound file by its directory entry. Throws std::bad_alloc.
IStorage* MakeStorageObject(const std::shared_ptr<CompoundFile>& file, std::uint32_t element);

} // namespace qxplatform
