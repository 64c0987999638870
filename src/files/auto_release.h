// Holder of a reference to a counted object: a COM interface pointer, or a clsIUnknownImpl.
#pragma once

#include "core/developer_run.h"

#include <type_traits>
#include <utility>

namespace qx
{

// Says to the debug output that an empty holder is about to be dereferenced, and stops in the debugger if there is one.
// For developers' runs: what follows is a crash.
void ReportNullInterface();

// clsAutoRelease<IStream*> holds an IStream.
template <class T>
class clsAutoRelease
{
    static_assert(std::is_pointer_v<T>, "the argument is the pointer that is held");
    using Object = std::remove_pointer_t<T>;

public:
    clsAutoRelease() = default;
    // Takes a reference of its own.
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

    // Takes over a reference that the caller has.
    void Adopt(T object)
    {
        Release();
        _object = object;
    }

    // Gives the reference to the caller.
    T Detach() { return std::exchange(_object, nullptr); }

    // The holder is empty before the object goes, which may come back to it.
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

    // For calls that give a reference through an address; what was held goes first.
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
