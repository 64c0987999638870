// A value that knows its type: the platform's VARIANT with copies that own what they hold.
#pragma once

#include "containers/slist.h"
#include "core/text/string.h"

#include <windows.h>

#include <oleauto.h>

#include <deque>
#include <initializer_list>

namespace qx
{

// A copy never holds a reference: what VT_BYREF leads to is copied. What the system can't copy (a type that is none of
// a variant, no memory) becomes empty. Nothing here throws but String.
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

    // Takes the value over with all that it owns.
    static clsVariant Adopt(const VARIANT& value) noexcept;

    // An array of variants with the lower bound 0. Without memory for it the value is empty.
    static clsVariant ArrayOf(std::deque<clsVariant> elements);

    void Swap(clsVariant& other) noexcept;

    VARTYPE Type() const noexcept { return _value.vt; }
    const VARIANT& Get() const noexcept { return _value; }

    // Copies to the caller's variant, which is cleared; the system's result.
    HRESULT CopyTo(VARIANT& target) const noexcept;
    // The same, but the target takes all over that the value owns, and the value is empty.
    HRESULT MoveTo(VARIANT& target) noexcept;

    // Replaces the value by such an array, in the order of the list.
    void SetArray(WCValSList<clsVariant> list);

private:
    VARIANT _value{}; // all bytes are defined, since a comparison may look at them all
};

// Numbers compare as numbers and texts as texts of the user interface language, whatever their types. Nothing
// (VT_EMPTY) and VT_NULL are equal to themselves alone. What is left is for the system to say.
bool operator==(const clsVariant& a, const clsVariant& b);

// The text that the value is in the user's locale; empty if it has none.
String ToString(const clsVariant& value);

// The number that the value is, or 0.
double ToDouble(const clsVariant& value);

// An element of an array of texts, variants or objects, with an index for each dimension, the last one first. Whatever
// the lower bounds, indexes begin at 0. Empty for other arrays, for what is no array, and for a wrong index.
clsVariant GetElement(const clsVariant& array, std::initializer_list<ULONG> indexes);

} // namespace qx
