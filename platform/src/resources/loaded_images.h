// The resources of the process's modules.
#pragma once

#include <minwindef.h>

#include <memory>
#include <optional>

#include "resources/resource_image.h"

namespace qxplatform
{

// The resources of a module, of the program for null. Null with ERROR_RESOURCE_DATA_NOT_FOUND if it has none.
std::shared_ptr<const ResourceImage> ImageOf(HMODULE module);

// The handle of a resource is the address of its header, which stays as long as the module is loaded.
HRSRC HandleOf(const Resource& resource);

// Empty with ERROR_INVALID_HANDLE for whatever else a pointer may point to.
std::optional<Resource> ResourceOf(HRSRC handle);

} // namespace qxplatform
