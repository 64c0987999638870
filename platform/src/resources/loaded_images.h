// The resources of the process's modules.
#pragma once

#include <minwindef.h>

#include <memory>
#include <optional>

#include "resources/resource_image.h"

namespace qxplatform
{

// Returns the resources of a module, or of the program for null. Null with ERROR_RESOURCE_DATA_NOT_FOUND if it has
// none.
std::shared_ptr<const ResourceImage> ImageOf(HMODULE module);

// Returns the handle of a resource: the address of its header, valid as long as the module is loaded.
HRSRC HandleOf(const Resource& resource);

// Returns the resource of a handle. Empty with ERROR_INVALID_HANDLE if the pointer is not a resource handle.
std::optional<Resource> ResourceOf(HRSRC handle);

} // namespace qxplatform
