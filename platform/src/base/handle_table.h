// The table behind all handles of the process. A handle contains the index and the generation of an entry, so that
// closed handles and values that never were handles are detected. Look-ups take no lock.
#pragma once

#include "base/fail.h"
#include "base/object.h"

#include <cstdint>

namespace qxplatform
{

// The access rights of a handle whose open function lets the caller select no rights.
inline constexpr DWORD kAllAccess = 0xFFFFFFFF;

// Keeps a handle's entry, and thus its object, from being released as long as it exists.
class HandlePin
{
public:
    explicit HandlePin(HANDLE handle);
    HandlePin(const HandlePin&) = delete;
    HandlePin& operator=(const HandlePin&) = delete;
    ~HandlePin();

    explicit operator bool() const { return _entry != nullptr; }
    Object& object() const;
    DWORD access() const;

    // Returns false if another thread has closed the handle in the meantime.
    bool Close();

private:
    struct HandleEntry* _entry = nullptr;
    std::uint32_t _index;
};

// Creates an entry for the object. Returns null with ERROR_NO_SYSTEM_RESOURCES on failure.
HANDLE AddHandle(const Ref<Object>& object, DWORD access = kAllAccess);

// Returns the object of a handle and, if requested, the access rights of its entry. If the result is empty, the last
// error is unchanged.
Ref<Object> ObjectOf(HANDLE handle, DWORD* access = nullptr);

// Closes the entry if `mayClose` accepts the type of its object. Otherwise returns FALSE with ERROR_INVALID_HANDLE.
BOOL CloseEntry(HANDLE handle, bool (*mayClose)(const Object&));

// Pins the object of a handle if it has type T (identified by `T::kObjectType`). Otherwise empty with
// ERROR_INVALID_HANDLE, or with ERROR_ACCESS_DENIED if the entry lacks one of the rights. For calls that return
// quickly: a pin writes to memory shared by all users of the handle half as often as a reference does.
template <class T>
class Pinned
{
public:
    explicit Pinned(HANDLE handle, DWORD rights = 0) : _pin(handle)
    {
        if (!_pin || _pin.object().type != T::kObjectType)
            SetLastError(ERROR_INVALID_HANDLE);
        else if ((_pin.access() & rights) != rights)
            SetLastError(ERROR_ACCESS_DENIED);
        else
            _object = static_cast<T*>(&_pin.object());
    }

    explicit operator bool() const { return _object != nullptr; }
    T* get() const { return _object; }
    T* operator->() const { return _object; }

private:
    const HandlePin _pin;
    T* _object = nullptr;
};

// Looks up an object like Pinned, but returns a reference, for calls that may block.
template <class T>
Ref<T> LookUp(HANDLE handle, DWORD rights = 0)
{
    return Ref<T>(Pinned<T>(handle, rights).get());
}

// Calls the function with every existing object. Intended for the end of the process.
void ForEachObject(void (*function)(Object&));

} // namespace qxplatform
