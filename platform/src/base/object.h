// The objects behind handles: reference-counted, with a type.
#pragma once

#include <minwindef.h>

#include <atomic>
#include <cstdint>
#include <utility>

namespace qxplatform
{

enum class ObjectType : std::uint8_t
{
    File,
    Find,
    Process,
    Thread,
    Event,
    Mutex,
    Semaphore,
    Mapping,
    CompletionPort,
    Token,
    RegistryKey,
    ActivationContext,
    NetworkEnumeration,
};

class Object
{
public:
    explicit Object(ObjectType objectType) : type(objectType) {}
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    void AddRef() { _count.fetch_add(1, std::memory_order_relaxed); }
    void Release()
    {
        if (_count.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

    // Kernel objects are closed with CloseHandle; other objects have their own functions.
    bool IsKernelObject() const
    {
        return type != ObjectType::Find && type != ObjectType::RegistryKey && type != ObjectType::ActivationContext &&
               type != ObjectType::NetworkEnumeration;
    }

    virtual class Waitable* AsWaitable() { return nullptr; }

    // Count the handles of the object. Called by the handle table.
    void AddHandle() { _handles.fetch_add(1, std::memory_order_relaxed); }
    void RemoveHandle()
    {
        if (_handles.fetch_sub(1, std::memory_order_acq_rel) == 1)
            LastHandleClosed();
    }

    // Maps generic rights such as GENERIC_READ to the specific rights of the type.
    virtual DWORD MapAccess(DWORD access) const { return access; }

    const ObjectType type;

protected:
    virtual ~Object() = default;

    // Called when the last handle is closed. Calls in progress may still use the object.
    virtual void LastHandleClosed() {}

private:
    std::atomic<std::uint32_t> _handles = 0;
    std::atomic<std::uint32_t> _count = 0;
};

// Holds one reference.
template <class T>
class Ref
{
public:
    Ref() = default;
    explicit Ref(T* object) : _object(object)
    {
        if (_object != nullptr)
            _object->AddRef();
    }
    Ref(const Ref& other) : Ref(other._object) {}
    Ref(Ref&& other) noexcept : _object(std::exchange(other._object, nullptr)) {}
    template <class Derived>
    Ref(const Ref<Derived>& other) : Ref(other.get())
    {
    }
    ~Ref()
    {
        if (_object != nullptr)
            _object->Release();
    }
    Ref& operator=(Ref other) noexcept
    {
        std::swap(_object, other._object);
        return *this;
    }

    T* get() const { return _object; }
    T* operator->() const { return _object; }
    T& operator*() const { return *_object; }
    explicit operator bool() const { return _object != nullptr; }

private:
    T* _object = nullptr;
};

template <class T, class... Arguments>
Ref<T> MakeObject(Arguments&&... arguments)
{
    return Ref<T>(new T(std::forward<Arguments>(arguments)...));
}

} // namespace qxplatform
