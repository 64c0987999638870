// Which of a resource's languages a caller gets.
#pragma once

#include "resources/resource_image.h"

namespace qxplatform
{

// `languages` holds one resource in its languages. Null if none of them is what was asked for.
const Resource* ChooseLanguage(std::span<const Resource> languages, LANGID wanted);

} // namespace qxplatform
