// clsVariant, a VARIANT whose copies own their contents.
#pragma once

#include "containers/slist.h"
#include "core/text/string.h"

#include <windows.h>

#include <oleauto.h>

#include <deque>
#include <initializer_list>

namespace qx
{

// A copy never contains a reference: the target of VT_BYREF is copied instead. A value that the system can't copy
// (invalid type, out of memory) becomes empty. No function throws, except for those that create a String.
class clsVariant
{
public:
    clsVariant() noexcept { VariantInit(&_value); }
    clsVariant(const VARIANT& value) noexcept;
    explicit clsVariant(const String& text);
    clsVariant(const clsVariant& other) noexcept : clsVariant(other._value) {}
    clsVariant(clsVariant&& other) noexcept : _value(other._value) { VariantInit(&other._value); }
    clsVariant& operator=(clsVariant other) noexcept
    {
        Swap(other);
        return *this;
    }
    ~clsVariant() { VariantClear(&_value); }

    // Takes ownership of the value and everything in it.
    static clsVariant Adopt(const VARIANT& value) noexcept;

    // Returns an array of variants with the lower bound 0. If memory runs out, the result is empty.
    static clsVariant ArrayOf(std::deque<clsVariant> elements);

    void Swap(clsVariant& other) noexcept;

    VARTYPE Type() const noexcept { return _value.vt; }
    const VARIANT& Get() const noexcept { return _value; }

    // Copies to the caller's variant, whose old value is cleared. Returns the system's result.
    HRESULT CopyTo(VARIANT& target) const noexcept;
    // Moves the value to the caller's variant, whose old value is cleared. This value becomes empty. Returns the
    // system's result.
    HRESULT MoveTo(VARIANT& target) noexcept;

    // Replaces the value by an array of variants in the order of the list.
    void SetArray(WCValSList<clsVariant> list);

private:
    VARIANT _value{}; // all bytes are defined, because comparisons may read them all
};

// Numbers are compared as numbers and texts as texts of the user interface language, whatever their types. VT_EMPTY and
// VT_NULL are only equal to themselves. The system compares all other pairs of types.
bool operator==(const clsVariant& a, const clsVariant& b);

// Returns the value as text in the user's locale, or an empty text if it can't be converted.
String ToString(const clsVariant& value);

// Returns the value as a number, or 0 if it can't be converted.
double ToDouble(const clsVariant& value);

// Returns an element of an array of texts, variants or objects. There is one index per dimension, the last dimension
// first; indexes start at 0 whatever the lower bounds are. Returns an empty value for other arrays, for values that are
// no arrays, and for an index out of range.
clsVariant GetElement(const clsVariant& array, std::initializer_list<ULONG> indexes);

} // namespace qx
