// Resolves references in variants.
#pragma once

#include <oaidl.h>

namespace qxplatform
{

// Returns the value that the variant contains or refers to. Its bytes still belong to the owner and must not be
// cleared. DISP_E_BADVARTYPE if the type is invalid; E_INVALIDARG for a null reference or a reference to another
// reference to a variant.
HRESULT Resolve(const VARIANT& source, VARIANT& shared);

} // namespace qxplatform
