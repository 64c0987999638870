// Objects that live until the process ends or the library is unloaded.
#pragma once

#include <memory>
#include <utility>

namespace qx
{

// The type-erased base of these objects.
class Kept
{
public:
    Kept() = default;
    Kept(const Kept&) = delete;
    Kept& operator=(const Kept&) = delete;
    virtual ~Kept() = default;

private:
    friend void Keep(std::unique_ptr<Kept> object);
    friend void DropForeverObjects();

    Kept* _next = nullptr;
};

void Keep(std::unique_ptr<Kept> object);

// Creates an object that is not destroyed at process end, because static objects and threads that are still running may
// use it then.
template <class T, class... Arguments>
T& MakeForever(Arguments&&... arguments)
{
    struct Holder final : Kept
    {
        explicit Holder(Arguments&&... given) : object(std::forward<Arguments>(given)...) {}

        T object;
    };
    auto holder = std::make_unique<Holder>(std::forward<Arguments>(arguments)...);
    T& object = holder->object;
    Keep(std::move(holder));
    return object;
}

// Destroys all these objects, the most recent first. Called when the library is unloaded and the process continues;
// nothing may use the objects afterwards.
void DropForeverObjects();

} // namespace qx
