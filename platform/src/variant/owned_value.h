// Releasing and copying what values own: strings, objects and arrays, which contain further values.
#pragma once

#include <oaidl.h>

namespace qxplatform
{

// Clears a variant. Fails and changes nothing for an invalid type and for a locked array.
HRESULT ClearValue(VARIANT& value);

// Replaces the resources of a bytewise copy of a variant with copies of its own. After a failure the copy owns nothing.
// Arrays nested more than 256 deep are not copied (E_OUTOFMEMORY).
HRESULT DuplicateValue(VARIANT& copy);

// Clears `target` and stores a copy of `source` in it.
HRESULT ReplaceValue(VARIANT& target, const VARIANT& source);

// Returns S_OK, or DISP_E_ARRAYISLOCKED without changes. Arrays nested in the elements are destroyed too, to any depth
// and without recursion, except for locked ones.
HRESULT DestroyArray(SAFEARRAY* array);

// Copies a string. A null string stays null.
HRESULT CopyText(BSTR source, BSTR& target);

// Copies an element of the array to a place that contains nothing to release.
HRESULT CopyElement(const SAFEARRAY* array, const void* source, void* target);

} // namespace qxplatform
