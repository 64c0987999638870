// The memory of safe arrays: layout, allocation and lock count.
#pragma once

#include <oaidl.h>

#include <cstddef>

#include "variant/value_type.h"

namespace qxplatform
{

// Returns the description of an element type, or null if there are no arrays of such elements.
const ValueType* ElementsOfArrays(VARTYPE type);

// Returns the element type stored with the array, or VT_EMPTY.
VARTYPE ElementType(SAFEARRAY* array);

std::size_t CountElements(const SAFEARRAY* array);

// Allocates an array whose elements are zero. `bounds` are in the caller's order, which is the reverse of the array's.
// Returns null if memory runs out or the elements need 4 GB or more.
SAFEARRAY* AllocateArray(const ValueType& type, UINT dimensions, const SAFEARRAYBOUND* bounds, bool madeAsVector);
bool WasMadeAsVector(const SAFEARRAY* array);

// Frees the memory, but nothing that the elements own. Memory provided by the caller is left to the caller.
void FreeArray(SAFEARRAY* array);

// Change the lock count. Return E_UNEXPECTED if it has reached its limit.
HRESULT LockArray(SAFEARRAY* array);
HRESULT UnlockArray(SAFEARRAY* array);

// Locks an array for the duration of one call.
class ArrayLock
{
public:
    explicit ArrayLock(SAFEARRAY* array) : _array(array), _result(LockArray(array)) {}
    ~ArrayLock()
    {
        if (SUCCEEDED(_result))
            UnlockArray(_array);
    }
    ArrayLock(const ArrayLock&) = delete;
    ArrayLock& operator=(const ArrayLock&) = delete;
    HRESULT Result() const { return _result; }

private:
    SAFEARRAY* _array;
    HRESULT _result;
};

template <class Element>
Element* DataAs(SAFEARRAY* array)
{
    return static_cast<Element*>(array->pvData);
}

} // namespace qxplatform
