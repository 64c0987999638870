// The one table behind all handles of the process. A handle names an entry by index and generation, so that a value
// whose entry was closed, or which never was a handle, is told from a living one. Looking up takes no lock.
#pragma once

#include "base/fail.h"
#include "base/object.h"

#include <cstdint>

namespace qxplatform
{

// The rights of an entry that was opened without any to choose from.
inline constexpr DWORD kAllAccess = 0xFFFFFFFF;

// Keeps the entry of a handle from being given back, and so its object, for as long as it lives.
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

    // False if another thread has closed the handle in the meantime.
    bool Close();

private:
    struct HandleEntry* _entry = nullptr;
    std::uint32_t _index;
};

// A new entry for the object, or null with ERROR_NO_SYSTEM_RESOURCES.
HANDLE AddHandle(const Ref<Object>& object, DWORD access = kAllAccess);

// The object of a handle and, if asked, the rights of its entry. An empty result leaves the last error alone.
Ref<Object> ObjectOf(HANDLE handle, DWORD* access = nullptr);

// Closes the entry if its object is of a type that `mayClose` admits. False with ERROR_INVALID_HANDLE otherwise.
BOOL CloseEntry(HANDLE handle, bool (*mayClose)(const Object&));

// The object of a handle of type T, which names its type as `T::kObjectType`: else empty with ERROR_INVALID_HANDLE, or
// with ERROR_ACCESS_DENIED if the entry lacks one of the rights. For calls that end at once: they touch a word that all
// users of the handle share half as often as one that takes a reference.
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

// The same with a reference, for calls that may block.
template <class T>
Ref<T> LookUp(HANDLE handle, DWORD rights = 0)
{
    return Ref<T>(Pinned<T>(handle, rights).get());
}

// Calls the function with every living object. Meant for the end of the process.
void ForEachObject(void (*function)(Object&));

} // namespace qxplatform
