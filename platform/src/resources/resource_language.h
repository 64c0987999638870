// Selects a resource's language for a caller.
#pragma once

#include "resources/resource_image.h"

namespace qxplatform
{

// `languages` contains one resource in all its languages. Returns null if none matches.
const Resource* ChooseLanguage(std::span<const Resource> languages, LANGID wanted);

} // namespace qxplatform
