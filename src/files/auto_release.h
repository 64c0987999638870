// Holds a reference to a reference-counted object: a COM interface pointer or a clsIUnknownImpl.
#pragma once

#include "core/developer_run.h"

#include <type_traits>
#include <utility>

namespace qx
{

// Reports to the debug output that an empty holder is about to be dereferenced, and breaks into the debugger if one is
// attached. A diagnostic for developers' runs: the dereference itself will crash.
void ReportNullInterface();

// Holds a reference; clsAutoRelease<IStream*> holds an IStream.
template <class T>
class clsAutoRelease
{
    static_assert(std::is_pointer_v<T>, "the argument is the pointer that is held");
    using Object = std::remove_pointer_t<T>;

public:
    clsAutoRelease() = default;
    // Adds a reference.
    explicit clsAutoRelease(T object) : _object(object) { AddReference(); }
    clsAutoRelease(const clsAutoRelease& other) : _object(other._object) { AddReference(); }
    clsAutoRelease(clsAutoRelease&& other) noexcept : _object(std::exchange(other._object, nullptr)) {}
    ~clsAutoRelease() { Release(); }

    clsAutoRelease& operator=(clsAutoRelease other) noexcept
    {
        std::swap(_object, other._object);
        return *this;
    }
    clsAutoRelease& operator=(T object) { return *this = clsAutoRelease(object); }

    // Takes ownership of the caller's reference.
    void Adopt(T object)
    {
        Release();
        _object = object;
    }

    // Transfers ownership of the reference to the caller.
    T Detach() { return std::exchange(_object, nullptr); }

    // Clears the holder before it releases the object, because the object's destructor may access the holder.
    void Release()
    {
        if (T object = Detach())
        {
            if constexpr (requires { object->NonDelegatingRelease(); })
                object->NonDelegatingRelease();
            else
                object->Release();
        }
    }

    // Releases the held object and returns an address for calls that return a reference through a pointer.
    T* Receive()
    {
        Release();
        return &_object;
    }

    T Get() const { return _object; }
    explicit operator bool() const { return _object != nullptr; }

    T operator->() const
    {
        if (_object == nullptr && UtilIsDeveloperRun())
            ReportNullInterface();
        return _object;
    }

    Object& operator*() const { return *operator->(); }

private:
    void AddReference()
    {
        if (_object == nullptr)
            return;
        if constexpr (requires(T object) { object->NonDelegatingAddRef(); })
            _object->NonDelegatingAddRef();
        else
            _object->AddRef();
    }

    T _object = nullptr;
};

} // namespace qx
