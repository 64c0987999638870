// A variant without its references.
#pragma once

#include <oaidl.h>

namespace qxplatform
{

// What the variant holds or refers to, as bytes that still belong to its owner: not to be cleared. DISP_E_BADVARTYPE
// for no type of a variant, E_INVALIDARG for a reference to nothing or to another reference to a variant.
HRESULT Resolve(const VARIANT& source, VARIANT& shared);

} // namespace qxplatform
